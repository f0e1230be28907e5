#pragma once

#include "KvNetworkLimits.h"

#include <KvNetwork/KvNetworkReport.h>

#include <QtCore/QBasicTimer>
#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonDocument>
#include <QtCore/QObject>
#include <QtNetwork/QSslError>

class QNetworkReply;

/// Watches over one reply until its outcome is known: takes the body as it comes, holds it to the limits, and
/// parses it once. A child of its reply.
class KvReplyOutcome : public QObject
{
    Q_OBJECT

public:
    KvReplyOutcome(QNetworkReply* reply, const KvNetworkLimits& limits);
    ~KvReplyOutcome() override;

    /// The one that watches over @p reply; null when there is none, or when @p reply is null.
    static KvReplyOutcome* of(QNetworkReply* reply);

    /// Says how the request was meant when the reply itself cannot tell, because it was never sent.
    void setUnsent(const QString& method, const QString& path, const QString& why);

    /// Breaks the reply off, with @p category and @p why as its outcome. No effect when the outcome is known
    /// already.
    void end(KvNetworkReport::Category category, const QString& why);

    QNetworkReply* reply() const { return m_reply; }

    bool isConcluded() const { return m_isConcluded; }
    bool isSuccessful() const { return m_isConcluded && m_report.category == KvNetworkReport::Ok; }

    /// How many event loops of this thread were running, one inside another, when the outcome became known.
    int concludedAtLoopLevel() const { return m_loopLevel; }

    /// Complete once concluded.
    const KvNetworkReport& report() const { return m_report; }

    /// The body; an empty document unless successful, and also when the body is empty or a lone number or
    /// text.
    const QJsonDocument& document() const { return m_document; }

Q_SIGNALS:
    /// Emitted once. A slot may send further requests and wait for them, and may delete the reply.
    void concluded(const KvNetworkReport& report);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void takeLength();
    void takeBody();
    void noteActivity();
    void startTimer();
    void conclude();
    void judge();
    void judgeBody();
    void setOutcome(KvNetworkReport::Category category, const QString& message);
    QString certificateFaults() const;

    QNetworkReply* m_reply;
    KvNetworkLimits m_limits;
    QElapsedTimer m_clock;
    qint64 m_lastActivityMs = 0;
    QBasicTimer m_timer;
    QByteArray m_body;
    QJsonDocument m_document;
    QList<QSslError> m_sslErrors;
    KvNetworkReport m_report;
    bool m_hasOutcome = false; ///< category and message are settled, though the reply may not have ended yet
    bool m_isConcluded = false;
    int m_loopLevel = 0;
};
