#pragma once

#include <KvNetwork/KvNetworkReport.h>
#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtTest/QTest>

/// Keeps the reports that NetworkManager emits while it lives.
class ReportRecorder : public QObject
{
public:
    ReportRecorder()
    {
        connect(&NetworkManager::instance(), &NetworkManager::requestFinished, this,
                [this](const KvNetworkReport& report) { reports.append(report); });
    }

    KvNetworkReport only() const { return reports.size() == 1 ? reports.first() : KvNetworkReport(); }

    QList<KvNetworkReport> reports;
};

/// One request from sending to its report.
struct Exchange
{
    bool isSuccessful = false;
    int execResult = 0;
    QJsonObject object;
    QList<QJsonObject> objectList;
    QJsonArray array;
    int reportCount = 0;
    KvNetworkReport report;
    qint64 elapsedMs = 0;

    template<typename Send>
    static Exchange of(Send send)
    {
        Exchange exchange;
        ReportRecorder recorder;
        QElapsedTimer clock;
        clock.start();
        NetworkEventLoop loop(send(NetworkManager::instance()));
        exchange.execResult = loop.exec();
        exchange.elapsedMs = clock.elapsed();
        exchange.isSuccessful = loop.isSuccessful();
        exchange.object = loop.object();
        exchange.objectList = loop.objectList();
        exchange.array = loop.array();
        exchange.reportCount = recorder.reports.size();
        exchange.report = recorder.only();
        return exchange;
    }

    static Exchange get(const QString& url)
    {
        return of([&](NetworkManager& manager) { return manager.get(url); });
    }
};

/// Gives the manager back its default limits and no token, whatever the test function set.
inline void resetNetworkManager()
{
    NetworkManager& manager = NetworkManager::instance();
    manager.setTimeout(0);
    manager.setTotalTimeout(0);
    manager.setReplySizeLimit(0);
    manager.setAccessToken(QString());
}
