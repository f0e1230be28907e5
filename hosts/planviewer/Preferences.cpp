#include "Preferences.h"

#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QSettings>

namespace {

QVariant value(const char* key)
{
    return QSettings(GetSettings()->settingsDirectory() + QStringLiteral("/planviewer.ini"),
                     QSettings::IniFormat)
        .value(QLatin1String(key));
}

void setValue(const char* key, const QVariant& value)
{
    QSettings(GetSettings()->settingsDirectory() + QStringLiteral("/planviewer.ini"), QSettings::IniFormat)
        .setValue(QLatin1String(key), value);
}

} // namespace

namespace Preferences {

QStringList columnOrder()
{
    return value("columns/order").toStringList();
}

void setColumnOrder(const QStringList& keys)
{
    setValue("columns/order", keys);
}

Theme theme()
{
    const QString word = value("window/theme").toString();
    return word == QLatin1String("dark")    ? Theme::Dark
           : word == QLatin1String("light") ? Theme::Light
                                            : Theme::System;
}

void setTheme(Theme theme)
{
    setValue("window/theme", theme == Theme::Dark    ? QStringLiteral("dark")
                             : theme == Theme::Light ? QStringLiteral("light")
                                                     : QString());
}

QString language()
{
    return value("window/language").toString();
}

void setLanguage(const QString& language)
{
    setValue("window/language", language);
}

QByteArray windowGeometry()
{
    return value("window/geometry").toByteArray();
}

void setWindowGeometry(const QByteArray& geometry)
{
    setValue("window/geometry", geometry);
}

} // namespace Preferences
