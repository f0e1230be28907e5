#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>

/// A request body that is handed out once. QNetworkAccessManager sends a request again by itself when its
/// connection closes before an answer; a change that the service may have made already would be made twice. A
/// body that cannot be rewound makes it fail instead.
class KvOneTimeBody : public QIODevice
{
    Q_OBJECT

public:
    explicit KvOneTimeBody(const QByteArray& body)
        : m_body(body)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    qint64 size() const override { return m_body.size(); }

    /// Only to where it stands: nothing has been handed out when that is the beginning.
    bool seek(qint64 position) override { return position == pos(); }

protected:
    qint64 readData(char* data, qint64 maximum) override;
    qint64 writeData(const char* data, qint64 maximum) override;

private:
    QByteArray m_body;
};
