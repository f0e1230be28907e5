// Reads a plan through the host's own libraries, from a server of its own.

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <cstdio>

namespace {

const char* said(bool good)
{
    return good ? "good" : "bad";
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QByteArray request;
    QTcpServer server;
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        QTcpSocket* const socket = server.nextPendingConnection();
        QObject::connect(socket, &QTcpSocket::readyRead, [&request, socket] {
            request += socket->readAll();
            if (!request.contains("\r\n\r\n"))
                return;
            const QByteArray body(
                R"({"_id":"65f0","name":"Tower","tasks":[{"_id":"t1","startDate":)"
                R"("2026-03-02T08:00:00.000","entity":[{"modelId":"m","entityIds":["e"]}]}]})");
            socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
                          QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
            socket->disconnectFromHost();
        });
    });
    if (!server.listen(QHostAddress::LocalHost))
        return 1;
    KvBaseApi::GetInstance().setBaseApi(QStringLiteral("http://127.0.0.1:%1/").arg(server.serverPort()));
    GetSoftCache()->setCurrentProjectId(QStringLiteral("P"));

    KvPlan plan;
    const bool read = KvPlanData::instance()->getPlanById(QStringLiteral("65f0"), plan);
    const bool asked = request.startsWith("GET /task-service/plans/65f0 HTTP/1.1\r\n");
    const bool own = request.toLower().contains("\r\nx-host: its own\r\n");
    const KvPlanNode task = plan.planNodes.value(0);
    const bool converted = plan.name == QLatin1String("Tower") &&
                           task.startDate == QDateTime(QDate(2026, 3, 2), QTime(8, 0)) &&
                           task.links.value(QStringLiteral("m")) == QStringList{QStringLiteral("e")};
    std::printf("read %s, asked %s, by the host's library %s, converted %s\n", said(read), said(asked),
                said(own), said(converted));
    return read && asked && own && converted ? 0 : 1;
}
