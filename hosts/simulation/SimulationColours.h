#pragma once

#include "SimulationState.h"

#include <setting/KvTimeLineSet.h>

#include <QtCore/QList>
#include <QtGui/QColor>

/// The state as it is shown: while delays are not shown (DisplayDelay), a late task has the state it would
/// have in time.
int shownState(int state, const TimeLineSet& set);

/// The state's own flag.
bool isStateFlagged(int state, const TimeLineSet& set);
/// Whether elements in that state are painted: DisplayStateColor and the state's own flag.
bool isStatePainted(int state, const TimeLineSet& set);
void setStateFlag(int state, bool isOn, TimeLineSet& set);

/// The colour of an element in a state. Invalid when it is not painted: what stands of it then shows its own
/// material, and one that is not built yet is not to be seen at all.
/// @param colours those of KvPlanSetting::GetSimulateColor()
QColor stateColour(int state, const TimeLineSet& set, const QList<QColor>& colours);

/// How an element is to be drawn.
struct ElementPaint
{
    enum Kind
    {
        Nothing, ///< not at all
        Hint,    ///< as a hint of what is to come, in the colour
        Solid,   ///< the share that stands
    };
    Kind kind = Nothing;
    double share = 0.0; ///< of a solid one, from where it grows
    Kv::QGrowthType growth = Kv::GrowBottomToTop;
    QColor colour; ///< invalid: that of its material; always valid for a hint
};

/// What is not built yet is hinted at as long as its state is painted, also when its task has begun; what was
/// taken down is gone.
ElementPaint elementPaint(const SimulationState& state, const TimeLineSet& set, const QList<QColor>& colours);
