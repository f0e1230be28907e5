#pragma once

#include <KvNetwork/KvNetworkExport.h>

#include <QtCore/QEventLoop>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QObject>

class QNetworkReply;

class KVNETWORK_EXPORT NetworkEventLoop : public QObject
{
    Q_OBJECT

public:
    explicit NetworkEventLoop(QNetworkReply* reply, QObject* parent = nullptr);
    ~NetworkEventLoop() override;

    int exec(QEventLoop::ProcessEventsFlags flags = QEventLoop::AllEvents);
    bool isSuccessful() const;
    QJsonObject object() const;
    QList<QJsonObject> objectList() const;
    QJsonArray array() const;
};
