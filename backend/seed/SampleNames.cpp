#include "SampleNames.h"

namespace PlanService {

namespace {

constexpr auto FS = SampleLink::FinishToStart;
constexpr auto SS = SampleLink::StartToStart;
constexpr auto FF = SampleLink::FinishToFinish;
constexpr auto SF = SampleLink::StartToFinish;

SampleName name(const char* zh, const char* en)
{
    return {QString::fromUtf8(zh), QString::fromLatin1(en)};
}

SampleTask task(const char* zh, const char* en, int days, SampleLink link = FS, int lag = 0,
                const QStringList& bills = {})
{
    return {name(zh, en), days, link, lag, false, bills};
}

SampleTask hoursLater(const char* zh, const char* en, int days, SampleLink link, int hours,
                      const QStringList& bills = {})
{
    return {name(zh, en), days, link, hours, true, bills};
}

SampleTrade trade(const char* zh, const char* en, const char* code, std::vector<SampleTask> tasks)
{
    return {name(zh, en), QString::fromLatin1(code), std::move(tasks)};
}

QStringList bill(const char* id)
{
    return {QString::fromLatin1(id)};
}

SamplePhase groundworks()
{
    return {
        name("施工准备与基础", "Groundworks"),
        QStringLiteral("foundation"),
        false,
        {{name("场地准备", "Site set-up"),
          {trade("临时设施", "Temporary works", "TMP",
                 {task("围挡搭设", "Put up hoarding", 4), task("临时用电", "Temporary power", 3, SS, 1),
                  task("塔吊基础", "Tower crane base", 5, FS, 0, bill("bill-concrete"))})}},
         {name("基坑工程", "Excavation"),
          {trade("土方开挖", "Earthworks", "EXC",
                 {task("支护桩", "Retaining piles", 12), task("土方开挖", "Dig the pit", 15, SS, 6),
                  task("锚索张拉", "Tension anchors", 8, FF, -2),
                  task("基坑值守", "Pit watch", 3, SF, -1)})}},
         {name("筏板基础", "Raft foundation"),
          {trade("基础施工", "Raft", "RAF",
                 {task("垫层", "Blinding layer", 3), task("防水", "Waterproofing", 5, FS, -1),
                  task("筏板钢筋", "Raft reinforcement", 10, FS, 0, bill("bill-rebar")),
                  hoursLater("筏板浇筑", "Pour the raft", 2, FS, 4, {QStringLiteral("bill-concrete")})})}}},
        name("基础验收", "Foundation accepted")};
}

SamplePhase structure()
{
    return {name("主体结构", "Structure"),
            QStringLiteral("structure"),
            true,
            {{name("层", "Floor"),
              {trade("钢筋模板", "Reinforcement and formwork", "STR",
                     {task("柱墙钢筋", "Wall and column rebar", 2, FS, -1, bill("bill-rebar")),
                      task("梁板模板", "Slab formwork", 2, SS, 1, bill("bill-formwork")),
                      task("梁板钢筋", "Slab rebar", 2, FF, 1, bill("bill-rebar"))}),
               trade("混凝土", "Concrete", "CON",
                     {hoursLater("混凝土浇筑", "Pour concrete", 1, FS, 4,
                                 {QStringLiteral("bill-concrete"), QStringLiteral("bill-pump")}),
                      task("养护", "Cure concrete", 4)})}}},
            name("主体封顶", "Structure topped out")};
}

SamplePhase envelope()
{
    return {name("外围护", "Envelope"),
            QStringLiteral("envelope"),
            true,
            {{name("层", "Floor"),
              {trade("外墙", "Facade", "FAC",
                     {task("砌体", "Masonry", 4, FS, 0, bill("bill-block")),
                      task("窗安装", "Fit windows", 3, FS, 1, bill("bill-window"))})}}},
            name("外围护完成", "Building is weathertight")};
}

SamplePhase services()
{
    return {name("机电安装", "Building services"),
            QStringLiteral("services"),
            true,
            {{name("层", "Floor"),
              {trade("管线", "Pipes and cables", "MEP",
                     {task("给排水", "Plumbing", 3, FS, 0, bill("bill-pipe")),
                      task("电气配管", "Electrical conduits", 3, SS, 1, bill("bill-cable"))})}}},
            name("机电完成", "Building services complete")};
}

SamplePhase interior()
{
    return {name("室内装修", "Fit-out"),
            QStringLiteral("interior"),
            true,
            {{name("层", "Floor"),
              {trade("装修", "Finishes", "FIN",
                     {task("抹灰", "Plaster", 4, FS, 2),
                      task("地砖", "Floor tiles", 3, SS, 2, bill("bill-tile"))})}}},
            name("装修完成", "Fit-out complete")};
}

SamplePhase handover()
{
    return {name("竣工移交", "Handover"),
            QStringLiteral("handover"),
            false,
            {{name("调试", "Commissioning"),
              {trade("系统调试", "System tests", "COM",
                     {task("正式送电", "Permanent power on", 2),
                      task("拆除临时用电", "Temporary power off", 2, SF, 1),
                      task("电梯验收", "Lift inspection", 3, FS, 0),
                      task("消防验收", "Fire safety inspection", 4, FF, 3)})}}},
            name("竣工移交", "Keys handed over")};
}

} // namespace

const std::vector<SamplePhase>& towerPhases()
{
    static const std::vector<SamplePhase> phases{groundworks(), structure(), envelope(),
                                                 services(),    interior(),  handover()};
    return phases;
}

const QStringList& samplePeople()
{
    static const QStringList people{
        QStringLiteral("chen.jie"),    QStringLiteral("wang.fang"),  QStringLiteral("li.qiang"),
        QStringLiteral("zhao.min"),    QStringLiteral("liu.yang"),   QStringLiteral("sun.lei"),
        QStringLiteral("anna.berger"), QStringLiteral("tom.miller"), QStringLiteral("zhou.ping"),
        QStringLiteral("eva.novak"),   QStringLiteral("wu.tao"),     QStringLiteral("xu.jing")};
    return people;
}

} // namespace PlanService
