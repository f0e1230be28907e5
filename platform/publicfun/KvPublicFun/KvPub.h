#pragma once

#include <KvPublicFun/KvPublicFunExport.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

/// Small helpers that the libraries of the application share. All functions are pure.
namespace KvPub {

KVPUBLICFUN_EXPORT QString getDateTimeFormat();
KVPUBLICFUN_EXPORT QDateTime getDateTimeByQString(const QString& text);
KVPUBLICFUN_EXPORT QString getQStringByDateTime(const QDateTime& dateTime);

KVPUBLICFUN_EXPORT bool naturalSort(const QString& a, const QString& b, Qt::CaseSensitivity cs);

KVPUBLICFUN_EXPORT bool isStringListSame(const QStringList& a, const QStringList& b);
KVPUBLICFUN_EXPORT void getStringListChange(const QStringList& oldList, const QStringList& newList,
                                            QStringList& added, QStringList& removed);

KVPUBLICFUN_EXPORT void removeCommonJsonValue(const QJsonObject& a, QJsonObject& b);
KVPUBLICFUN_EXPORT QStringList getStrListFromVarList(const QVariantList& list);

KVPUBLICFUN_EXPORT QJsonArray linksEntityToJsonArray(const QMap<QString, QStringList>& links);
KVPUBLICFUN_EXPORT QMap<QString, QStringList> jsonArrayToLinksEntity(const QJsonArray& array);

} // namespace KvPub
