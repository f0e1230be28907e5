#pragma once

#include <model/KvPlanNode.h>
#include <model/KvPlanNodeResponse.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

/// Values of the records as JSON for programs, and back. What is read has to have the right type throughout:
/// nothing is guessed, as a value that is misread would overwrite a good one. An absent key keeps the
/// record's default; an unknown one is refused.

QJsonValue toJson(const QString& text);
QJsonValue toJson(int number);
QJsonValue toJson(double number);
QJsonValue toJson(bool flag);
/// In ISO 8601, as the site's clock shows it; null when it is not set.
QJsonValue toJson(const QDateTime& dateTime);
QJsonValue toJson(const QStringList& texts);
QJsonValue toJson(const QMap<QString, QStringList>& lists);
QJsonValue toJson(const KvDuration& duration);
QJsonValue toJson(const QList<KvPlanPredecessor>& predecessors);
QJsonValue toJson(const QList<KvDocument>& documents);
QJsonValue toJson(const QList<KvMedia>& media);

/// @return false, with the target unchanged, when @p json is something else.
bool fromJson(const QJsonValue& json, QString& text);
bool fromJson(const QJsonValue& json, int& number);
bool fromJson(const QJsonValue& json, double& number);
bool fromJson(const QJsonValue& json, bool& flag);
bool fromJson(const QJsonValue& json, QDateTime& dateTime);
bool fromJson(const QJsonValue& json, QStringList& texts);
bool fromJson(const QJsonValue& json, QMap<QString, QStringList>& lists);
bool fromJson(const QJsonValue& json, KvDuration& duration);
bool fromJson(const QJsonValue& json, QList<KvPlanPredecessor>& predecessors);
