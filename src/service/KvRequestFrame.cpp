#include <service/KvRequestFrame.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkEventLoop.h>
#include <KvSoftBase/KvSoftBase.h>

namespace Kv {

QString serviceUrl(QLatin1String service, const char* pathTemplate)
{
    return KvBaseApi::GetInstance().getBaseApi() + service + QLatin1String(pathTemplate);
}

QString currentProject()
{
    return GetSoftCache()->currentProjectId();
}

bool exchange(QNetworkReply* reply, const std::function<void(const NetworkEventLoop&)>& read)
{
    NetworkEventLoop loop(reply, nullptr);
    loop.exec();
    read(loop);
    return loop.isSuccessful();
}

} // namespace Kv
