#include "PostgresAddress.h"

#include "Store.h"

#include <QUrl>
#include <QUrlQuery>

namespace PlanService {

namespace {

QString quoted(QString value)
{
    return QLatin1Char('\'') +
           value.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
               .replace(QLatin1Char('\''), QLatin1String("\\'")) +
           QLatin1Char('\'');
}

[[noreturn]] void refuse(const QString& what)
{
    throw StoreError(QStringLiteral("the address of the PostgreSQL database %1; it is written "
                                    "postgresql://user@host:5432/database")
                         .arg(what));
}

void append(const QString& key, const QString& value, QString& options)
{
    options += (options.isEmpty() ? QString() : QStringLiteral(" ")) + key + QLatin1Char('=') + quoted(value);
}

void addOption(const QString& key, const QString& value, PostgresAddress& address)
{
    if (value.contains(QLatin1Char(';'))) {
        refuse(QStringLiteral("has a ';' in its option '%1'").arg(key)); // Qt Sql separates options by it
    }
    for (const QChar c : key) {
        if (!(c >= QLatin1Char('a') && c <= QLatin1Char('z')) && c != QLatin1Char('_')) {
            refuse(QStringLiteral("has an option with the name '%1'").arg(key));
        }
    }
    // Such as sslpassword, which opens the private key that the client shows.
    if (!key.contains(QLatin1String("password")) && !key.contains(QLatin1String("secret"))) {
        append(key, value, address.options);
        return;
    }
    if (value != value.trimmed() || value.contains(QLatin1Char('\n'))) {
        // One line holds it where it is handed on.
        refuse(QStringLiteral("has a line break in its option '%1', or a blank at its end").arg(key));
    }
    address.secrets.append({key, value});
}

} // namespace

bool isPostgresAddress(const QString& database)
{
    return database.startsWith(QLatin1String("postgresql:")) ||
           database.startsWith(QLatin1String("postgres:"));
}

QString allOptions(const PostgresAddress& address)
{
    QString options = address.options;
    for (const auto& [key, value] : address.secrets) {
        append(key, value, options);
    }
    return options;
}

PostgresAddress readPostgresAddress(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || !text.contains(QLatin1String("://"))) {
        refuse(QStringLiteral("cannot be read"));
    }
    PostgresAddress address;
    address.host = url.host();
    address.port = url.port();
    address.user = url.userName(QUrl::FullyDecoded);
    address.password = url.password(QUrl::FullyDecoded);
    address.database = url.path(QUrl::FullyDecoded).mid(1);
    if (address.database.isEmpty()) {
        refuse(QStringLiteral("names no database"));
    }
    const auto options = QUrlQuery(url).queryItems(QUrl::FullyDecoded);
    for (const auto& [key, value] : options) {
        if (key == QLatin1String("host")) {
            address.host = value; // a folder of sockets, which fits nowhere else
        } else if (key == QLatin1String("password")) {
            address.password = value;
        } else {
            addOption(key, value, address);
        }
    }
    // A server that does not answer at all must not hold up every request for minutes.
    if (!address.options.contains(QLatin1String("connect_timeout="))) {
        addOption(QStringLiteral("connect_timeout"), QStringLiteral("5"), address);
    }
    if (!address.options.contains(QLatin1String("application_name="))) {
        addOption(QStringLiteral("application_name"), QStringLiteral("planservice"), address);
    }
    address.name = url.toString(QUrl::RemovePassword | QUrl::RemoveQuery | QUrl::RemoveFragment);
    return address;
}

} // namespace PlanService
