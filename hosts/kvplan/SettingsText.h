#pragma once

#include <setting/KvPlanSetting.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

/// Presentation settings for people; each ends with a line end.
QString columnsText(const QMap<QString, int>& widths);
QString hiddenText(const QStringList& names);
/// With a swatch of each colour where the output is a terminal that shows colours.
QString coloursText(KvPlanSetting& setting);
QString simulationText(const TimeLineSet& set);

/// The same for programs. Colours are "#rrggbb", those that are not opaque "#aarrggbb".
QJsonObject columnsToJson(const QMap<QString, int>& widths);
QJsonArray coloursToJson(KvPlanSetting& setting);
QJsonObject simulationToJson(const TimeLineSet& set);

/// Changes the one of @p set that is called @p name.
/// @return what is wrong, as half a sentence; empty when it was changed.
QString changeSimulation(TimeLineSet& set, const QString& name, const QString& value);
