#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <ctime>

/// Puts the process into another local time zone (a name such as "Europe/Berlin") as long as it lives.
class ScopedTimeZone
{
public:
    explicit ScopedTimeZone(const QByteArray& zone)
        : m_before(qgetenv("TZ"))
        , m_wasSet(qEnvironmentVariableIsSet("TZ"))
    {
        qputenv("TZ", zone);
        apply();
    }
    ~ScopedTimeZone()
    {
        if (m_wasSet)
            qputenv("TZ", m_before);
        else
            qunsetenv("TZ");
        apply();
    }
    Q_DISABLE_COPY(ScopedTimeZone)

private:
    static void apply()
    {
#ifdef Q_OS_WIN
        _tzset();
#else
        tzset();
#endif
    }

    QByteArray m_before;
    bool m_wasSet;
};
