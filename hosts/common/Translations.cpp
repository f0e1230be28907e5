#include "Translations.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLibraryInfo>
#include <QtCore/QLocale>
#include <QtCore/QTranslator>

namespace {

QString& programsFolder()
{
    static QString folder = QCoreApplication::applicationDirPath();
    return folder;
}

// "en-GB" is read from kvplandata_en_GB.qm or kvplandata_en.qm.
bool loadCatalogue(QTranslator& translator, const QString& catalogue, const QString& language)
{
    const QString name =
        catalogue + QLatin1Char('_') + QString(language).replace(QLatin1Char('-'), QLatin1Char('_'));
    return translator.load(name, QCoreApplication::applicationDirPath() + QLatin1String("/translations")) ||
           translator.load(name, programsFolder() + QLatin1Char('/') + QStringLiteral(KV_TRANSLATIONS_PATH));
}

bool isChinese(const QString& language)
{
    return QLocale(language).language() == QLocale::Chinese;
}

bool isEnglish(const QString& language)
{
    return QLocale(language).language() == QLocale::English;
}

// The language of the sources, which needs no catalogue, is told by @p isOfSources.
bool load(QTranslator& translator, const QString& catalogue, bool (*isOfSources)(const QString&))
{
    const QStringList languages = QLocale().uiLanguages();
    for (const QString& language : languages) {
        if (isOfSources(language))
            return false;
        if (loadCatalogue(translator, catalogue, language))
            return true;
    }
    return loadCatalogue(translator, catalogue, QStringLiteral("en"));
}

// What Qt itself says, as on the buttons of its dialogs; where its catalogues are installed.
void installQt()
{
    auto* const translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                         QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(translator);
}

void install(const QString& catalogue, bool (*isOfSources)(const QString&))
{
    auto* const translator = new QTranslator(QCoreApplication::instance());
    if (load(*translator, catalogue, isOfSources))
        QCoreApplication::installTranslator(translator);
}

} // namespace

void setProgramsFolder(const QString& folder)
{
    programsFolder() = folder;
}

void installTranslations()
{
    install(QStringLiteral("kvplandata"), isChinese);
}

void installProgramTranslations(const QString& catalogue)
{
    installQt();
    install(catalogue, isEnglish);
}
