#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

/// One part of a bar: a number of things, drawn as this character.
struct BarPart
{
    int count;
    QChar fill;
};

/// A bar of at most @p cells for @p most things. What is not 0 takes a cell at least, and a bar of parts is
/// as long as one of their sum would be, as far as that leaves a cell for each.
QString bar(const QVector<BarPart>& parts, int most, int cells);
