#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

/// What this program keeps for its user beside the library's settings, in "planviewer.ini" of the same
/// folder.
namespace Preferences {

enum class Theme
{
    System,
    Light,
    Dark
};

QStringList columnOrder();
void setColumnOrder(const QStringList& keys);
Theme theme();
void setTheme(Theme theme);
/// As "zh" or "en"; empty: that of the system.
QString language();
void setLanguage(const QString& language);
QByteArray windowGeometry();
void setWindowGeometry(const QByteArray& geometry);

} // namespace Preferences
