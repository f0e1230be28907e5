// The settings file of any bytes: it is read as something, and what is then written is read the same again.

#include "FuzzTarget.h"

#include <setting/SettingFolder.h>

#include <QtCore/QJsonObject>

namespace {

using Access = KvPlanSettingTestAccess;
using Widths = QMap<QString, int>;

Widths widthsIn(const QByteArray& file)
{
    const KvTest::SettingFolder folder(file);
    Widths widths;
    folder.setting()->GetGanttColumnWidth(widths);
    return widths;
}

QByteArray fileOf(const Widths& widths)
{
    const KvTest::SettingFolder folder;
    folder.setting()->SetGanttColumnWidth(widths);
    return folder.bytes();
}

void checkFile(const QByteArray& bytes)
{
    const Widths widths = widthsIn(bytes);
    for (const int width : widths)
        KvFuzz::require(width >= 1, "a width below 1");
    const Widths written = widthsIn(fileOf(widths)); // characters that the file cannot hold are lost once
    KvFuzz::require(widthsIn(fileOf(written)) == written, "widths written and read");

    const KvTest::SettingFolder folder(bytes);
    const KvTest::OwnSetting setting = folder.setting();
    const QList<QColor> colours = setting->GetSimulateColor();
    KvFuzz::require(colours.size() == 7, "seven colours");
    TimeLineSet set;
    setting->GetSimulateSetting(QStringLiteral("p1"), set);
    setting->SetSimulateSetting(QStringLiteral("p1"), set);
    QList<QColor> others = colours;
    std::reverse(others.begin(), others.end());
    setting->SetSimulateColor(others);

    const KvTest::SettingFolder later(folder.bytes());
    KvFuzz::require(later.setting()->GetSimulateColor() == others, "colours written and read");
    TimeLineSet again;
    KvFuzz::require(later.setting()->GetSimulateSetting(QStringLiteral("p1"), again), "a simulation kept");
    KvFuzz::require(Access::timeLineText(*setting, again) == Access::timeLineText(*setting, set),
                    "a simulation written and read");
}

void checkTexts(const QString& json)
{
    const KvTest::SettingFolder folder;
    const KvTest::OwnSetting setting = folder.setting();
    const QJsonObject object = KvFuzz::documentOf(json.toUtf8()).object();

    Access::parsePlanColours(*setting, json);
    const QString colours = Access::planColours(*setting);
    Access::parseProcessColours(*setting, colours);
    KvFuzz::require(Access::processColours(*setting) == colours, "colours as text");
    Access::parseFloorHeights(*setting, json);
    const QString heights = Access::floorHeights(*setting);
    Access::parseFloorHeights(*setting, heights);
    KvFuzz::require(Access::floorHeights(*setting) == heights, "heights as text");
    for (const QString& key : object.keys()) {
        KvFuzz::require(setting->GetFloorHeight(key) == object.value(key).toDouble(), "a height");
        KvFuzz::require(setting->GetPlanColor(key).rgba() == object.value(key).toString().toUInt(),
                        "a colour");
    }

    TimeLineSet set;
    Access::parseTimeLine(*setting, json, set);
    const QString text = Access::timeLineText(*setting, set);
    TimeLineSet again;
    Access::parseTimeLine(*setting, text, again);
    KvFuzz::require(Access::timeLineText(*setting, again) == text, "a simulation as text");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = KvFuzz::bytesOf(data, size);
    if (bytes.trimmed().startsWith('{'))
        checkTexts(QString::fromUtf8(bytes));
    else
        checkFile(bytes);
    return 0;
}
