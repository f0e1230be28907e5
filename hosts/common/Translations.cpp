#include "Translations.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>
#include <QtCore/QTranslator>

namespace {

// "en-GB" is read from kvplandata_en_GB.qm or kvplandata_en.qm.
bool loadCatalogue(QTranslator& translator, const QString& language)
{
    const QString name =
        QStringLiteral("kvplandata_") + QString(language).replace(QLatin1Char('-'), QLatin1Char('_'));
    const QString program = QCoreApplication::applicationDirPath();
    return translator.load(name, program + QLatin1String("/translations")) ||
           translator.load(name, program + QLatin1Char('/') + QStringLiteral(KV_TRANSLATIONS_PATH));
}

bool isChinese(const QString& language)
{
    return QLocale(language).language() == QLocale::Chinese;
}

bool load(QTranslator& translator)
{
    const QStringList languages = QLocale().uiLanguages();
    for (const QString& language : languages) {
        if (isChinese(language))
            return false;
        if (loadCatalogue(translator, language))
            return true;
    }
    return loadCatalogue(translator, QStringLiteral("en"));
}

} // namespace

void installTranslations()
{
    auto* const translator = new QTranslator(QCoreApplication::instance());
    if (load(*translator))
        QCoreApplication::installTranslator(translator);
}
