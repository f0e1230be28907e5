#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QTranslator>

namespace KvTest {

/// The English catalogue that the project builds, installed as long as the object lives.
class English
{
public:
    English()
    {
        if (!m_translator.load(QStringLiteral("kvplandata_en"), QStringLiteral(KV_CATALOGUES)))
            qFatal("no catalogue in %s", KV_CATALOGUES);
        QCoreApplication::installTranslator(&m_translator);
    }

private:
    QTranslator m_translator; // uninstalls itself
};

/// Puts the context before each label, as a translator that a test can tell apart.
class Marking : public QTranslator
{
public:
    Marking() { QCoreApplication::installTranslator(this); }

    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override
    {
        return QStringLiteral("%1/%2/%3/%4")
            .arg(QLatin1String(context), QString::fromUtf8(sourceText), QLatin1String(disambiguation),
                 QString::number(n));
    }
    bool isEmpty() const override { return false; }
};

inline const QStringList englishDirections{QStringLiteral("Left to right"), QStringLiteral("Right to left"),
                                           QStringLiteral("Front to back"), QStringLiteral("Back to front"),
                                           QStringLiteral("Top to bottom"), QStringLiteral("Bottom to top"),
                                           QStringLiteral("Appear"),        QStringLiteral("Disappear")};

inline const QStringList chineseDirections{QStringLiteral("从左到右"), QStringLiteral("从右到左"),
                                           QStringLiteral("从前到后"), QStringLiteral("从后到前"),
                                           QStringLiteral("从上到下"), QStringLiteral("从下到上"),
                                           QStringLiteral("从无到有"), QStringLiteral("从有到无")};

/// The values of these directions.
const int directionValues[] = {4, 6, 0, 2, 8, 10, 12, 13};

inline const QStringList englishStates{
    QStringLiteral("Not started"),    QStringLiteral("Not started (delayed)"),
    QStringLiteral("In progress"),    QStringLiteral("In progress (delayed)"),
    QStringLiteral("Finished"),       QStringLiteral("Finished (ahead of time)"),
    QStringLiteral("Finished (late)")};

inline const QStringList chineseStates{QStringLiteral("未开始"),      QStringLiteral("未开始(延期)"),
                                       QStringLiteral("执行中"),      QStringLiteral("执行中(延期)"),
                                       QStringLiteral("已完成"),      QStringLiteral("已完成(提前)"),
                                       QStringLiteral("已完成(延期)")};

} // namespace KvTest
