#include "KvReplyOutcome.h"

#include "KvFailureText.h"

#include <QtCore/QJsonArray>
#include <QtCore/QStringList>
#include <QtCore/QThread>
#include <QtCore/QTimerEvent>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

namespace {

QString methodOf(const QNetworkReply& reply)
{
    switch (reply.operation()) {
    case QNetworkAccessManager::GetOperation:
        return QStringLiteral("GET");
    case QNetworkAccessManager::PostOperation:
        return QStringLiteral("POST");
    case QNetworkAccessManager::PutOperation:
        return QStringLiteral("PUT");
    case QNetworkAccessManager::DeleteOperation:
        return QStringLiteral("DELETE");
    case QNetworkAccessManager::HeadOperation:
        return QStringLiteral("HEAD");
    default:
        return QString::fromLatin1(
            reply.request().attribute(QNetworkRequest::CustomVerbAttribute).toByteArray());
    }
}

// Content-Length, or -1 without one. When a redirect was followed, Qt may keep that of the first reply and
// put the last one behind it, with a comma between.
qint64 declaredLength(const QNetworkReply& reply)
{
    const QByteArray text = reply.rawHeader("Content-Length");
    bool isNumber = false;
    const qint64 length = text.mid(text.lastIndexOf(',') + 1).trimmed().toLongLong(&isNumber);
    return isNumber ? length : -1;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

char firstSignificant(const QByteArray& text)
{
    for (const char c : text) {
        if (!isSpace(c))
            return c;
    }
    return '\0';
}

bool mayBeginLoneValue(char c)
{
    return c == '"' || c == '-' || (c >= '0' && c <= '9') || c == 't' || c == 'f' || c == 'n';
}

// QJsonDocument takes objects and arrays only, though a lone value is JSON too and a service may answer
// "true". Inside brackets it is an array of one.
void parseLoneValue(const QByteArray& text, QJsonParseError& error)
{
    const QJsonDocument document = QJsonDocument::fromJson('[' + text + ']', &error);
    if (error.error == QJsonParseError::NoError && document.array().size() != 1)
        error.error = QJsonParseError::GarbageAtEnd;
    error.offset = qMax(0, error.offset - 1);
}

} // namespace

KvReplyOutcome::KvReplyOutcome(QNetworkReply* reply, const KvNetworkLimits& limits)
    : QObject(reply)
    , m_reply(reply)
    , m_limits(limits)
{
    m_clock.start();
    m_report.method = methodOf(*reply);
    m_report.path =
        KvFailureText::withoutSecrets(reply->request().url().path(QUrl::FullyEncoded), reply->request());
    if (reply->isFinished()) {
        conclude();
        return;
    }
    connect(reply, &QNetworkReply::finished, this, &KvReplyOutcome::conclude);
    connect(reply, &QNetworkReply::metaDataChanged, this, &KvReplyOutcome::takeLength);
    connect(reply, &QNetworkReply::readyRead, this, &KvReplyOutcome::takeBody);
    if (reply->operation() != QNetworkAccessManager::GetOperation)
        connect(reply, &QNetworkReply::uploadProgress, this, &KvReplyOutcome::noteActivity);
    if (reply->request().url().scheme() == QLatin1String("https"))
        connect(reply, &QNetworkReply::sslErrors, this,
                [this](const QList<QSslError>& errors) { m_sslErrors = errors; });
    startTimer();
}

KvReplyOutcome::~KvReplyOutcome()
{
    // Here the reply is half gone: somebody deleted it while it was on its way.
    if (!m_isConcluded) {
        m_isConcluded = true;
        m_loopLevel = QThread::currentThread()->loopLevel();
        setOutcome(KvNetworkReport::Aborted, QStringLiteral("the reply was deleted before it was complete"));
        m_report.durationMs = m_clock.elapsed();
        Q_EMIT concluded(m_report);
    }
}

KvReplyOutcome* KvReplyOutcome::of(QNetworkReply* reply)
{
    return reply == nullptr ? nullptr
                            : reply->findChild<KvReplyOutcome*>(QString(), Qt::FindDirectChildrenOnly);
}

void KvReplyOutcome::setUnsent(const QString& method, const QString& path, const QString& why)
{
    m_report.method = method;
    m_report.path = path;
    setOutcome(KvNetworkReport::Refused, why);
}

void KvReplyOutcome::end(KvNetworkReport::Category category, const QString& why)
{
    if (m_isConcluded)
        return;
    setOutcome(category, why);
    m_reply->abort(); // ends in conclude(), by way of the reply's finished()
}

void KvReplyOutcome::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_timer.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    const qint64 now = m_clock.elapsed();
    if (now >= m_limits.totalMs)
        end(KvNetworkReport::Timeout, KvFailureText::totalTimeout(m_limits.totalMs));
    else if (now - m_lastActivityMs >= m_limits.idleMs)
        end(KvNetworkReport::Timeout, KvFailureText::idleTimeout(*m_reply, m_limits.idleMs));
    else
        startTimer();
}

void KvReplyOutcome::noteActivity()
{
    m_lastActivityMs = m_clock.elapsed();
}

// One timer serves both limits. Activity does not move it: it looks at the clock when it fires, and goes to
// sleep again when there was some.
void KvReplyOutcome::startTimer()
{
    const qint64 now = m_clock.elapsed();
    const qint64 wait = qMin<qint64>(m_lastActivityMs + m_limits.idleMs, m_limits.totalMs) - now;
    m_timer.start(static_cast<int>(qMax<qint64>(wait, 0)), Qt::PreciseTimer, this);
}

void KvReplyOutcome::takeLength()
{
    noteActivity();
    if (declaredLength(*m_reply) > m_limits.replyBytes)
        end(KvNetworkReport::Aborted, KvFailureText::tooLarge(m_limits.replyBytes));
}

void KvReplyOutcome::takeBody()
{
    noteActivity();
    if (m_hasOutcome || !m_reply->isOpen()) // an aborted reply is closed
        return;
    if (m_reply->bytesAvailable() > m_limits.replyBytes - m_body.size()) {
        end(KvNetworkReport::Aborted, KvFailureText::tooLarge(m_limits.replyBytes));
    } else if (m_body.isEmpty()) {
        m_body = m_reply->readAll();
        // The rest goes behind it without moving it each time; what the service promises is not worth a great
        // deal.
        const qint64 length = declaredLength(*m_reply);
        if (length > m_body.size())
            m_body.reserve(static_cast<int>(qMin<qint64>(length, 16 * 1024 * 1024)));
    } else {
        m_body += m_reply->readAll();
    }
}

void KvReplyOutcome::conclude()
{
    if (m_isConcluded)
        return;
    m_timer.stop();
    takeBody();
    if (m_isConcluded) // the last bytes were too many
        return;
    m_isConcluded = true;
    m_loopLevel = QThread::currentThread()->loopLevel();
    m_report.httpStatus = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (!m_hasOutcome)
        judge();
    m_body = QByteArray();
    m_report.message = KvFailureText::withoutSecrets(m_report.message, m_reply->request());
    m_report.durationMs = m_clock.elapsed();
    const KvNetworkReport report = m_report; // a slot may delete the reply, and this with it
    Q_EMIT concluded(report);
}

void KvReplyOutcome::judge()
{
    const int status = m_report.httpStatus;
    const QNetworkReply::NetworkError error = m_reply->error();
    if (error == QNetworkReply::SslHandshakeFailedError) {
        setOutcome(KvNetworkReport::Tls, KvFailureText::untrusted(*m_reply, certificateFaults()));
    } else if (status >= 300) {
        setOutcome(KvNetworkReport::Http, KvFailureText::httpStatus(*m_reply, status, m_body));
    } else if (error == QNetworkReply::TimeoutError) {
        setOutcome(KvNetworkReport::Timeout, KvFailureText::unreachable(*m_reply));
    } else if (error == QNetworkReply::OperationCanceledError) {
        setOutcome(KvNetworkReport::Aborted, QStringLiteral("the request was aborted"));
    } else if (error == QNetworkReply::RemoteHostClosedError || error == QNetworkReply::ContentReSendError ||
               (status > 0 && error != QNetworkReply::NoError)) {
        setOutcome(KvNetworkReport::Aborted, KvFailureText::connectionLost(*m_reply, m_body.size()));
    } else if (error == QNetworkReply::ProtocolFailure || error >= QNetworkReply::ContentAccessDenied) {
        setOutcome(KvNetworkReport::Http, KvFailureText::notHttp(*m_reply));
    } else if (error != QNetworkReply::NoError) {
        setOutcome(KvNetworkReport::Refused, KvFailureText::unreachable(*m_reply));
    } else if (status < 200) {
        setOutcome(KvNetworkReport::Http, KvFailureText::notHttp(*m_reply));
    } else {
        judgeBody();
    }
}

void KvReplyOutcome::judgeBody()
{
    if (m_body.size() < declaredLength(*m_reply)) {
        setOutcome(KvNetworkReport::Aborted, KvFailureText::connectionLost(*m_reply, m_body.size()));
        return;
    }
    const bool mayBeEmpty = m_report.httpStatus == 204 || m_report.httpStatus == 205 ||
                            m_reply->operation() == QNetworkAccessManager::DeleteOperation;
    const char first = firstSignificant(m_body);
    QString message;
    QJsonParseError error = {};
    if (first == '\0') {
        if (!mayBeEmpty)
            message = QStringLiteral("the reply is empty where JSON was expected");
    } else if (mayBeginLoneValue(first)) {
        parseLoneValue(m_body, error);
    } else {
        m_document = QJsonDocument::fromJson(m_body, &error);
    }
    if (error.error != QJsonParseError::NoError)
        message = QStringLiteral("the reply is no valid JSON: %1 at byte %2")
                      .arg(error.errorString())
                      .arg(error.offset);
    if (message.isEmpty()) {
        setOutcome(KvNetworkReport::Ok, QString());
        return;
    }
    if (m_reply->hasRawHeader("Content-Encoding"))
        message += QStringLiteral("; it came compressed, which was not asked for");
    message += QStringLiteral("; check that the base address is that of the service");
    setOutcome(KvNetworkReport::Parse, message);
}

void KvReplyOutcome::setOutcome(KvNetworkReport::Category category, const QString& message)
{
    m_hasOutcome = true;
    m_report.category = category;
    m_report.message = message;
}

QString KvReplyOutcome::certificateFaults() const
{
    QStringList faults;
    for (const QSslError& error : m_sslErrors) {
        const QStringList names = error.certificate().subjectInfo(QSslCertificate::CommonName);
        QString fault = error.errorString();
        if (!names.isEmpty())
            fault +=
                QStringLiteral(" (certificate of \"%1\")").arg(KvFailureText::oneLine(names.first(), 80));
        if (!faults.contains(fault))
            faults.append(fault);
        if (faults.size() == 3)
            break;
    }
    return faults.join(QLatin1String("; "));
}
