#pragma once

#include <KvPlanData/KvPlanDataExport.h>
#include <setting/KvGrowthType.h>
#include <setting/KvTimeLineSet.h>

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtGui/QColor>

/// The user's presentation settings for plans.
///
/// Column widths, simulation colours and simulation settings are kept in the file "PlanSetting.ini" of the
/// application's settings folder, the hidden columns on the service, everything else in memory alone. The
/// folder is asked for once, when the object is created.
///
/// The file is opened, read or written, and closed within one operation. It is replaced as a whole, so a
/// reader finds the old file or the new one. What cannot be read is not there, what cannot be written is
/// lost; neither is told. Texts are stored in GB2312: a character that it lacks is lost, as a rule for "?".
///
/// No lock is taken: use the object from one thread. Only its creation is thread-safe.
class KVPLANDATA_EXPORT KvPlanSetting
{
public:
    /// The object, created by the first call and destroyed at process exit. Creating it reads the simulation
    /// colours from the file and asks the service for nothing.
    static KvPlanSetting* instance();

    /// An independent snapshot; it shares its data with the original until one side writes.
    KvPlanSetting(const KvPlanSetting& other);
    /// Takes over all settings of @p other, as a copy does. Writes no file.
    KvPlanSetting& operator=(const KvPlanSetting& other);

    /// The translation of a label of this class; the label itself when no translator has one.
    static QString tr(const char* sourceText, const char* disambiguation = nullptr, int n = -1);
    /// The same.
    static QString trUtf8(const char* sourceText, const char* disambiguation = nullptr, int n = -1);

    // Columns of the Gantt chart

    /// Reads the hidden columns from the service. Blocks; events of this thread are handled meanwhile. The
    /// list is empty afterwards when none are stored, and when the request failed.
    ///
    /// Request: `GET user-service/settings/plan_hideHeader`.
    void LoadPlanSetting();

    /// Names of the hidden columns as they were last loaded or saved; empty before that. Asks nobody.
    QStringList GetGanttHideHeader() const;

    /// Stores the hidden columns on the service. Blocks, unless the same names are hidden already, in
    /// whatever order: then nothing is sent and the list stays as it is.
    /// @return false when the request failed; the hidden columns are then those from before.
    ///
    /// Request: `PUT user-service/settings/plan_hideHeader`.
    bool SetGanttHideHeader(const QStringList& headers);

    /// Reads the column widths from the file into @p widths, by column name. A width that is no number or
    /// below 1 reads as 100. Columns that the file lacks stay in @p widths as they are.
    void GetGanttColumnWidth(QMap<QString, int>& widths);

    /// Writes the column widths into the file, in place of all that are there. Nothing is written when
    /// @p widths is what this object last read or wrote.
    void SetGanttColumnWidth(const QMap<QString, int>& widths);

    // Colours of plans and processes, in memory alone. The keys are the caller's.

    /// The colour of a plan. A key without one gets a random one, opaque and different from those of all
    /// other plans, which it then keeps. Seeds this thread's `qrand` when it invents one.
    QColor GetPlanColor(const QString& key);
    /// The same for processes. Plans and processes may share a colour.
    QColor GetProcessColor(const QString& key);
    /// Sets any colour, also one that is taken.
    void SetPlanColor(const QString& key, const QColor& colour);
    /// Likewise.
    void SetProcessColor(const QString& key, const QColor& colour);
    /// Forgets all colours; each key gets a fresh one when it is asked for next.
    void ClearPlanColor();
    void ClearProcessColor(); ///< likewise

    // Colours of the simulation, by state; GetSimulateColorTypeStr() tells the states

    /// All colours: the user's, or the default ones when the file does not hold exactly seven at creation. A
    /// stored text that is no number reads as transparent black.
    QList<QColor> GetSimulateColor() const;
    /// The colour of one state. @param index from 0 to the number of colours less one; it is not checked.
    QColor GetSimulateColor(int index) const;
    /// Keeps the colours and writes them into the file; nothing is written when they are the same as now.
    /// Give seven: of any other number the next process makes the default ones.
    void SetSimulateColor(const QList<QColor>& colours);
    /// The seven colours a user starts with.
    QList<QColor> GetDefaultSimulateColor();
    /// Labels of the seven states, in the language of the first call, which is as a rule the creation of the
    /// object.
    QStringList GetSimulateColorTypeStr() const;

    // Floor heights, in the model's unit of length, in memory alone. The keys are the caller's.

    /// The height of a floor; 3.0 unless another is set.
    double GetFloorHeight(const QString& key);
    /// Sets any height. One that differs from 3.0 by less than a trillionth goes back to 3.0.
    void SetFloorHeight(const QString& key, double height);
    /// Every floor is 3.0 high again.
    void ClearFloorHeight();

    // The simulation of a plan, and how elements grow into view

    /// Copies the settings of a plan into @p set. The file is read while this object holds no settings of any
    /// plan, and not again after that.
    /// @return false, with @p set untouched, when the plan has none.
    bool GetSimulateSetting(const QString& planId, TimeLineSet& set);

    /// Keeps the settings of a plan and writes those of all plans that this object holds into the file.
    /// Call GetSimulateSetting() once before: without that the settings of other plans in the file are lost.
    void SetSimulateSetting(const QString& planId, const TimeLineSet& set);

    /// Labels of all directions, in the language in which the object was created.
    QStringList GetAllDirection() const;
    /// The direction of a label in the present language; bottom to top for any other text.
    Kv::QGrowthType GetEnumDirByStringDir(const QString& label) const;
    /// The label of a direction in the present language; empty for a number that stands for none.
    QString GetStringDirByEnumDir(const Kv::QGrowthType& type) const;

private:
    friend struct KvPlanSettingTestAccess; // the tests' way to the private operations

    KvPlanSetting();
    ~KvPlanSetting();

    QColor GetRandomColor();
    QString MakePlanColorJsonStr() const;
    QString MakeProcessColorJsonStr() const;
    void ParsePlanColorJsonStr(const QString& json);
    void ParseProcessColorJsonStr(const QString& json);
    void InitSimulateColor();

    QString MakeFloorHeightJsonStr() const;
    void ParseFloorHeightJsonStr(const QString& json);

    void StringToTimeLineSet(const QString& text, TimeLineSet& set);
    QString TimeLineSetToString(const TimeLineSet& set) const;

    QString m_strIniFile;
    QString m_strDefaultDirection; // label of bottom to top; no operation reads it
    QStringList m_listDirection;
    QStringList m_listHideHeader;
    QMap<QString, TimeLineSet> m_mapSimulateSetting; // by plan id
    int m_nReserved;                                 // no operation reads it
    QMap<QString, double> m_mapFloorHeight;          // only heights other than 3.0
    QMap<QString, QColor> m_mapProcessColor;
    QMap<QString, QColor> m_mapPlanColor;
    QMap<QString, int> m_mapGanttColumnWidth; // as last read from or written to the file
    QStringList m_listSimulateColor;          // each the decimal text of its QRgb, alpha included
    QList<QColor> m_listDefaultSimulateColor;
};
