#include <KvNetwork/KvBaseApi.h>

KvBaseApi& KvBaseApi::GetInstance()
{
    static KvBaseApi* const instance = new KvBaseApi;
    return *instance;
}

KvBaseApi::KvBaseApi()
{
    setBaseApi(qEnvironmentVariable("KV_BASE_API"));
}

QString KvBaseApi::getBaseApi() const
{
    return m_baseApi;
}

void KvBaseApi::setBaseApi(const QString& address)
{
    m_baseApi = address.trimmed();
    if (!m_baseApi.isEmpty() && !m_baseApi.endsWith(QLatin1Char('/')))
        m_baseApi += QLatin1Char('/');
}
