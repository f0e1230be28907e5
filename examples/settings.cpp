// Keeps and shows how a user wants to see plans. The second run shows what the first one kept.
//
//     settings http://127.0.0.1:8700/ FOLDER

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <setting/KvPlanSetting.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    KvBaseApi::GetInstance().setBaseApi(arguments.value(1));
    QTextStream out(stdout);
    out.setCodec("UTF-8");

    // [columns]
    SetSettingsDirectory(arguments.value(2)); // before instance() is called first: that asks for it once
    KvPlanSetting& setting = *KvPlanSetting::instance();

    QMap<QString, int> widths{{QStringLiteral("name"), 240}, {QStringLiteral("start"), 100}};
    setting.GetGanttColumnWidth(widths); // kept widths take the place of these
    out << "column \"name\": " << widths.value(QStringLiteral("name")) << '\n';
    widths[QStringLiteral("name")] += 20; // the user drags the column wider
    setting.SetGanttColumnWidth(widths);

    setting.LoadPlanSetting(); // asks the service
    out << "hidden: " << setting.GetGanttHideHeader().join(QStringLiteral(", ")) << '\n';
    if (!setting.SetGanttHideHeader({QStringLiteral("remark"), QStringLiteral("slack")}))
        out << "the hidden columns are not saved\n";
    // [/columns]

    // [simulation]
    const QString planId = QStringLiteral("65f0");
    TimeLineSet set;
    if (!setting.GetSimulateSetting(planId, set)) // also loads those of the other plans: always call it first
        out << "simulation: as it comes\n";
    out << "days a second: " << set.DayForS << '\n';
    set.DayForS *= 2;
    setting.SetSimulateSetting(planId, set);

    const QStringList states = setting.GetSimulateColorTypeStr();
    const QList<QColor> colours = setting.GetSimulateColor();
    for (int i = 0; i < states.size(); ++i)
        out << states.at(i) << ' ' << colours.at(i).name() << '\n';
    const Kv::QGrowthType growth = setting.GetEnumDirByStringDir(setting.GetAllDirection().first());
    out << "grows: " << setting.GetStringDirByEnumDir(growth) << '\n';
    // [/simulation]
    out << "colour of the plan: " << setting.GetPlanColor(planId).name()
        << '\n'; // random, the same until the end
    return 0;
}
