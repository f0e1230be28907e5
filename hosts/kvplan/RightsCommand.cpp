#include "RightsCommand.h"

#include "Arguments.h"
#include "CellText.h"
#include "Output.h"
#include "Session.h"

#include <KvSoftBase/KvSoftBase.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

struct Right
{
    const char* name;
    bool (KvPlanData::*isGranted)();
    const char* granted;
    const char* refused;
};

// The library knows of the right to read only whether it is for all plans.
const Right rights[] = {
    {"create", &KvPlanData::getCreateAuth, "yes", "no"},
    {"edit", &KvPlanData::getEditAuth, "yes", "no"},
    {"delete", &KvPlanData::getDeleteAuth, "yes", "no"},
    {"read", &KvPlanData::getReadAuth, "all plans", "your own plans and tasks at most"},
    {"export", &KvPlanData::getExportAuth, "yes", "no"},
};

} // namespace

int runRights(const QStringList& arguments)
{
    Arguments line(QStringLiteral("rights"),
                   QStringLiteral("Shows what you may do with the project's plans, or with those of one\n"
                                  "category."),
                   QString());
    line.addOption("category", "name", "Category.");
    line.addJsonOption();
    if (!line.read(arguments, 0) || !line.needService() || !line.needProject())
        return line.exitCode();
    const Session session;
    KvPlanData* data = KvPlanData::instance();
    data->initAuth(line.value("category"));
    if (session.hasFailed()) // which of the five cannot be told from a refusal
        return session.complainOfFailure(QStringLiteral("read your rights"));
    QJsonObject json;
    QString text = QStringLiteral("project   %1\n").arg(fitted(GetSoftCache()->currentProjectId(), 0));
    if (!line.value("category").isEmpty())
        text += QStringLiteral("category  %1\n").arg(fitted(line.value("category"), 0));
    for (const Right& right : rights) {
        const bool isGranted = (data->*right.isGranted)();
        json.insert(QLatin1String(right.name), isGranted);
        text += QStringLiteral("%1  %2\n")
                    .arg(QLatin1String(right.name), -8)
                    .arg(QLatin1String(isGranted ? right.granted : right.refused));
    }
    return line.wantsJson() ? say(QJsonDocument(json).toJson()) : say(text);
}
