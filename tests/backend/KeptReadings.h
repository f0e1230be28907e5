#pragma once

// Everything that can be read of the kept databases of released versions.

#include "DatabaseRows.h"
#include "store/OpenStore.h"

#include <QMap>

namespace KvTest {

inline QString whole(const PlanService::JsonPieces& pieces)
{
    QByteArray text;
    for (const QByteArray& piece : pieces) {
        text += piece;
    }
    return QString::fromUtf8(text);
}

/// Everything that can be read of an up-to-date database through the store, by what it is.
inline QMap<QString, QString> readings(PlanService::SqlDatabase& raw, PlanService::Store& store)
{
    using namespace PlanService;
    QMap<QString, QString> read;
    const QStringList plans = firstColumn(raw, "SELECT id FROM plans"_s);
    for (const QString& id : plans) {
        read.insert("plan "_s + id, whole(store.planJson(id)));
    }
    const QStringList nodes = firstColumn(raw, "SELECT id FROM planNodes"_s);
    for (const QString& id : nodes) {
        read.insert("node "_s + id, whole(store.planNodeJson(id, true)));
        read.insert("owners of "_s + id, store.planNodeOwnership(id)->users.join(QLatin1Char('|')));
        const QString responses = whole(store.responseListJson(id, true));
        if (responses != "[]"_s) {
            read.insert("responses of "_s + id, responses);
        }
        const auto state = store.taskState(id);
        if (state) {
            read.insert("state of "_s + id, "%1 %2 %3"_s.arg(state->id, state->responseId).arg(state->state));
        }
    }
    for (const char* user : {"ann", "back\\slash", "line\nend", "王芳"}) {
        PlanNodeQuery query;
        query.projectId = "tower"_s;
        query.planId = "plan-1"_s;
        query.visible.elsewhere = ReadScope::All;
        query.worker = QString::fromUtf8(user);
        read.insert("work of "_s + *query.worker, whole(store.planNodeListJson(query)));
    }
    const QList<TokenRecord> tokens = store.tokens();
    for (const TokenRecord& token : tokens) {
        QString text = "%1 %2 %3 %4"_s.arg(token.userId, token.createdAt, token.revokedAt,
                                           QString::fromLatin1(token.hash.toHex()));
        const QList<RightsRecord> all = store.rights(token.id);
        for (const RightsRecord& rights : all) {
            text += " %1/%2:%3%4%5%6%7"_s.arg(rights.projectId, rights.category, rights.read)
                        .arg(rights.create)
                        .arg(rights.edit)
                        .arg(rights.remove)
                        .arg(rights.exportPlans);
        }
        read.insert("token %1"_s.arg(token.id), text);
    }
    const QStringList settings = firstColumn(raw, "SELECT userId || '/' || settingKey FROM userSettings"_s);
    for (const QString& name : settings) {
        const int slash = name.indexOf(QLatin1Char('/'));
        read.insert("setting "_s + name,
                    QString::fromUtf8(store.userSetting(name.left(slash), name.mid(slash + 1))));
    }
    return read;
}

inline QMap<QString, QString> readingsOfFile(const QString& path)
{
    PlanService::SqliteDatabase raw(path);
    const auto store = PlanService::openStore(path, PlanService::MissingDatabase::Refuse);
    return readings(raw, *store);
}

} // namespace KvTest
