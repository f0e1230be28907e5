#pragma once

#include <QtCore/QDateTime>
#include <QtWidgets/QWidget>

/// A day of the month in which the tests of the controls build.
inline QDateTime day(int number, int hour = 0)
{
    return QDateTime(QDate(2026, 3, number), QTime(hour, 0));
}

/// A part of a widget, by the name it was given; there has to be one.
template<class Widget>
Widget* part(QWidget& of, const char* name)
{
    auto* const found = of.findChild<Widget*>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s", name);
    return found;
}
