#pragma once

#include "SettingFolder.h"

#include <QtTest/QtTest>

namespace KvTest {

/// Plans and processes follow the same rules: each test runs for both.
struct ColourKind
{
    QColor (KvPlanSetting::*get)(const QString&);
    void (KvPlanSetting::*set)(const QString&, const QColor&);
    void (KvPlanSetting::*clear)();
    QString (*toJson)(const KvPlanSetting&);
    void (*fromJson)(KvPlanSetting&, const QString&);
};

inline const ColourKind plans = {&KvPlanSetting::GetPlanColor, &KvPlanSetting::SetPlanColor,
                                 &KvPlanSetting::ClearPlanColor, KvPlanSettingTestAccess::planColours,
                                 KvPlanSettingTestAccess::parsePlanColours};
inline const ColourKind processes = {
    &KvPlanSetting::GetProcessColor, &KvPlanSetting::SetProcessColor, &KvPlanSetting::ClearProcessColor,
    KvPlanSettingTestAccess::processColours, KvPlanSettingTestAccess::parseProcessColours};

/// Rows ("kind") of both.
inline void bothKinds()
{
    QTest::addColumn<ColourKind>("kind");
    QTest::newRow("plans") << plans;
    QTest::newRow("processes") << processes;
}

} // namespace KvTest

Q_DECLARE_METATYPE(KvTest::ColourKind)
