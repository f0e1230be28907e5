#include "../access/Tokens.h"
#include "../store/OpenStore.h"
#include "Commands.h"

#include <QDateTime>

namespace PlanService {

namespace {

RightsRecord rightsFrom(const Options& options)
{
    RightsRecord rights;
    options.required(QStringLiteral("project"));
    rights.projectId = options.indexedName(QStringLiteral("project"));
    rights.category = options.indexedName(QStringLiteral("category"));
    readRights(options.required(QStringLiteral("rights")), rights);
    return rights;
}

qint64 tokenIdFrom(const Options& options)
{
    const QString text = options.arguments().value(1);
    bool isNumber = false;
    const qint64 id = text.toLongLong(&isNumber);
    if (!isNumber) {
        throw UsageError(
            QStringLiteral("'%1' is not a token's number; see planservice token list").arg(text));
    }
    return id;
}

QString now()
{
    return tokenTime(QDateTime::currentDateTimeUtc());
}

/// The end of the last day on which the token is good; empty without --expires.
QString expiryFrom(const Options& options)
{
    const QDate lastDay = options.date(QStringLiteral("expires"));
    if (lastDay.isNull()) {
        return QString();
    }
    const QString end = tokenTime(QDateTime(lastDay.addDays(1), QTime(0, 0), Qt::UTC));
    if (end <= now()) {
        throw Failure(QStringLiteral("%1 is over already; name the last day on which the token is good")
                          .arg(lastDay.toString(Qt::ISODate)));
    }
    return end;
}

QString stateOf(const TokenRecord& token)
{
    if (!token.revokedAt.isEmpty()) {
        return QStringLiteral("revoked ") + token.revokedAt;
    }
    if (token.expiresAt.isEmpty()) {
        return QStringLiteral("good");
    }
    return (token.expiresAt <= now() ? QStringLiteral("expired ") : QStringLiteral("good until ")) +
           token.expiresAt;
}

void createToken(const Options& options, Store& store)
{
    TokenRecord token;
    options.required(QStringLiteral("user"));
    token.userId = options.indexedName(QStringLiteral("user"));
    token.createdAt = now();
    token.expiresAt = expiryFrom(options);
    const RightsRecord rights = rightsFrom(options);
    const QByteArray text = newToken();
    token.hash = tokenHash(text);
    Transaction transaction(store);
    const qint64 id = store.addToken(token);
    store.setRights(id, rights);
    transaction.commit();
    print(QStringLiteral("token %1 of %2; it is shown only now:\n").arg(id).arg(token.userId));
    print(text + '\n');
}

void grantRights(const Options& options, Store& store)
{
    const qint64 id = tokenIdFrom(options);
    const RightsRecord rights = rightsFrom(options);
    const QList<TokenRecord> tokens = store.tokens();
    for (const TokenRecord& token : tokens) {
        if (token.id == id) {
            Transaction transaction(store);
            store.setRights(id, rights);
            transaction.commit();
            return;
        }
    }
    throw Failure(QStringLiteral("there is no token %1; see planservice token list").arg(id));
}

void listTokens(Store& store)
{
    const QList<TokenRecord> tokens = store.tokens();
    for (const TokenRecord& token : tokens) {
        print(QStringLiteral("%1\t%2\tcreated %3\t%4\n")
                  .arg(token.id)
                  .arg(token.userId, token.createdAt, stateOf(token)));
        const QList<RightsRecord> all = store.rights(token.id);
        for (const RightsRecord& rights : all) {
            print(QStringLiteral("\tproject %1\tcategory %2\t%3\n")
                      .arg(rights.projectId,
                           rights.category.isEmpty() ? QStringLiteral("(any)") : rights.category,
                           rightsText(rights)));
        }
    }
}

void revokeToken(const Options& options, Store& store)
{
    const qint64 id = tokenIdFrom(options);
    if (!store.revokeToken(id, now())) {
        throw Failure(QStringLiteral("there is no token %1; see planservice token list").arg(id));
    }
}

} // namespace

int runToken(const QStringList& arguments)
{
    Options options(
        QStringLiteral("token"),
        QStringLiteral("create: make a token for --user with --rights in --project, and print it.\n"
                       "grant ID: give a token --rights in one more --project.\n"
                       "list: show tokens and rights, never a token itself.\n"
                       "revoke ID: make a token useless."),
        {QStringLiteral("create|grant|list|revoke"), QStringLiteral("[ID]")});
    options.add(QStringLiteral("database"),
                QStringLiteral("SQLite file, or postgresql://user@host:5432/database."),
                QStringLiteral("DATABASE"));
    options.add(QStringLiteral("user"), QStringLiteral("User that the token stands for."),
                QStringLiteral("NAME"));
    options.add(QStringLiteral("project"), QStringLiteral("Project that the rights are for."),
                QStringLiteral("ID"));
    options.add(QStringLiteral("category"),
                QStringLiteral("Plan category that the rights are for; any unless given."),
                QStringLiteral("NAME"));
    options.add(QStringLiteral("rights"),
                QStringLiteral("List of read=all, read=own, create, edit, delete, export."),
                QStringLiteral("LIST"));
    options.add(QStringLiteral("expires"),
                QStringLiteral("Last day, in UTC, on which a created token is good; for ever unless given."),
                QStringLiteral("yyyy-MM-dd"));
    if (!options.parse(arguments)) {
        return 0;
    }
    const QString action = options.arguments().value(0);
    const QStringList actions{QStringLiteral("create"), QStringLiteral("grant"), QStringLiteral("list"),
                              QStringLiteral("revoke")};
    if (!actions.contains(action)) {
        throw UsageError(
            QStringLiteral("'%1' is no action of token; use create, grant, list or revoke").arg(action));
    }
    const auto store = openStore(options.required(QStringLiteral("database")), MissingDatabase::Refuse);
    if (action == QLatin1String("create")) {
        createToken(options, *store);
    } else if (action == QLatin1String("grant")) {
        grantRights(options, *store);
    } else if (action == QLatin1String("list")) {
        listTokens(*store);
    } else {
        revokeToken(options, *store);
    }
    return 0;
}

} // namespace PlanService
