// The facade's operations on the current user: rights and settings kept on the service.

#include <plandata/KvPlanData.h>

#include <service/KvProgressEndpoints.h>

#include <KvNetwork/KvBaseProxy.h>

void KvPlanData::initAuth(const QString& category)
{
    const QString asked = category; // the caller's text may change during a wait
    const auto ask = [&](QLatin1String key, QLatin1String granted, bool& right) {
        QString value;
        if (Kv::requestAuthValue(asked, key, value))
            right = value == granted;
    };
    const QLatin1String yes("true");
    ask(QLatin1String("create"), yes, m_createAuth);
    ask(QLatin1String("edit"), yes, m_editAuth);
    ask(QLatin1String("delete"), yes, m_deleteAuth);
    // The one right with degrees: "own" is not enough, for a host shows whole projects.
    ask(QLatin1String("read"), QLatin1String("all"), m_readAuth);
    ask(QLatin1String("export"), yes, m_exportAuth);
}

bool KvPlanData::getCreateAuth()
{
    return m_createAuth;
}

bool KvPlanData::getEditAuth()
{
    return m_editAuth;
}

bool KvPlanData::getDeleteAuth()
{
    return m_deleteAuth;
}

bool KvPlanData::getReadAuth()
{
    return m_readAuth;
}

bool KvPlanData::getExportAuth()
{
    return m_exportAuth;
}

bool KvPlanData::loadSetting(const QString& key, QJsonObject& value)
{
    return KvBaseProxy::getUserSetting(key, value);
}

bool KvPlanData::saveSetting(const QString& key, const QJsonObject& value)
{
    return KvBaseProxy::setUserSetting(key, value);
}
