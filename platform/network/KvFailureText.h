#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

class QNetworkReply;
class QNetworkRequest;
class QUrl;

/// The words of a report: what failed, with which value, and what to do next. One line each, of limited
/// length, and without query, user name, password or body.
namespace KvFailureText {

/// @p text made fit for a message: one line, no control characters, at most @p maximum characters.
QString oneLine(const QString& text, int maximum = 200);

/// The service's own words in a body of the form {"error": {"code", "message", "field"}}; empty when @p body
/// is no such.
QString serviceError(const QByteArray& body, const QNetworkRequest& request);

QString unreachable(const QNetworkReply& reply);
QString untrusted(const QNetworkReply& reply, const QString& certificateFaults);
QString httpStatus(const QNetworkReply& reply, int status, const QByteArray& body);
QString connectionLost(const QNetworkReply& reply, qint64 received);
QString notHttp(const QNetworkReply& reply);
QString unusableAddress(const QUrl& url);
QString idleTimeout(const QNetworkReply& reply, int milliseconds);
QString totalTimeout(int milliseconds);
QString tooLarge(qint64 limit);

/// @p text with every occurrence of a secret that @p request carries (access token, password) replaced.
QString withoutSecrets(const QString& text, const QNetworkRequest& request);

} // namespace KvFailureText
