#include "Appearance.h"

#include "Translations.h"

#include <QtCore/QLocale>
#include <QtGui/QPalette>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStyleFactory>

namespace {

QPalette palette(const QColor& window, const QColor& base, const QColor& text, const QColor& button,
                 const QColor& highlight)
{
    QPalette colours(text, button, button.lighter(130), button.darker(150), button.darker(120), text,
                     Qt::white, base, window);
    colours.setColor(QPalette::AlternateBase, window);
    colours.setColor(QPalette::Highlight, highlight);
    colours.setColor(QPalette::HighlightedText, Qt::white);
    colours.setColor(QPalette::Link, highlight);
    colours.setColor(QPalette::ToolTipBase, base);
    colours.setColor(QPalette::ToolTipText, text);
    QColor pale = text;
    pale.setAlpha(110);
    colours.setColor(QPalette::PlaceholderText, pale);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        colours.setColor(QPalette::Disabled, role, pale);
    return colours;
}

} // namespace

namespace Appearance {

void apply(Preferences::Theme theme)
{
    // One style everywhere: others do not take a palette as it is.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    switch (theme) {
    case Preferences::Theme::System:
        QApplication::setPalette(QApplication::style()->standardPalette());
        return;
    case Preferences::Theme::Light:
        QApplication::setPalette(palette(QColor(0xf3, 0xf4, 0xf6), Qt::white, QColor(0x1c, 0x20, 0x26),
                                         QColor(0xe7, 0xe9, 0xed), QColor(0x1f, 0x6f, 0xc4)));
        return;
    case Preferences::Theme::Dark:
        QApplication::setPalette(palette(QColor(0x2b, 0x2e, 0x33), QColor(0x1f, 0x22, 0x26),
                                         QColor(0xe6, 0xe8, 0xeb), QColor(0x3a, 0x3e, 0x45),
                                         QColor(0x3f, 0x8c, 0xde)));
        return;
    }
}

void applyLanguage(const QString& language)
{
    if (language == QLatin1String("zh"))
        QLocale::setDefault(QLocale(QLocale::Chinese, QLocale::China));
    else if (language == QLatin1String("en"))
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    installTranslations();
    installProgramTranslations(QStringLiteral("planviewer"));
}

} // namespace Appearance
