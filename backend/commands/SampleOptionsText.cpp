#include "SampleOptionsText.h"

namespace PlanService {

void addSampleOptions(Options& options)
{
    const SampleOptions usual;
    options.add(QStringLiteral("project"), QStringLiteral("Project id."), QStringLiteral("ID"),
                usual.projectId);
    options.add(QStringLiteral("category"), QStringLiteral("Plan category."), QStringLiteral("NAME"),
                usual.category);
    options.add(QStringLiteral("floors"), QStringLiteral("Floors of a tower, 1 to 200; 0 chooses."),
                QStringLiteral("N"), QStringLiteral("0"));
    options.add(QStringLiteral("nodes"),
                QStringLiteral("Exactly so many nodes, 1 to 1000000, in as many towers as that takes; "
                               "0 builds a single tower, some 400 nodes with 18 floors."),
                QStringLiteral("N"), QStringLiteral("0"));
    options.add(QStringLiteral("seed"), QStringLiteral("Number that the chances of the site depend on."),
                QStringLiteral("S"), QStringLiteral("1"));
    options.add(QStringLiteral("language"), QStringLiteral("Language of the names: zh, en or both."),
                QStringLiteral("LANG"), QStringLiteral("both"));
    options.add(QStringLiteral("start-date"), QStringLiteral("First day on site, yyyy-MM-dd."),
                QStringLiteral("DATE"), usual.start.toString(Qt::ISODate));
    options.add(
        QStringLiteral("status-date"),
        QStringLiteral("Day up to which progress is known, yyyy-MM-dd; 45 % into the tower unless given."),
        QStringLiteral("DATE"));
}

SampleOptions readSampleOptions(const Options& options)
{
    SampleOptions sample;
    options.required(QStringLiteral("project"));
    options.required(QStringLiteral("category"));
    sample.projectId = options.indexedName(QStringLiteral("project"));
    sample.category = options.indexedName(QStringLiteral("category"));
    sample.floors = options.number(QStringLiteral("floors"), 0, 200);
    sample.nodes = options.number(QStringLiteral("nodes"), 0, 1000000);
    sample.seed =
        static_cast<quint32>(options.number(QStringLiteral("seed"), 0, std::numeric_limits<int>::max()));
    const QString language = options.text(QStringLiteral("language"));
    if (language == QLatin1String("zh")) {
        sample.language = SampleLanguage::Chinese;
    } else if (language == QLatin1String("en")) {
        sample.language = SampleLanguage::English;
    } else if (language != QLatin1String("both")) {
        throw UsageError(QStringLiteral("--language '%1' has to be zh, en or both").arg(language));
    }
    sample.start = options.date(QStringLiteral("start-date"));
    sample.status = options.date(QStringLiteral("status-date"));
    return sample;
}

} // namespace PlanService
