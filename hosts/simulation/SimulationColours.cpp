#include "SimulationColours.h"

#include <iterator>

namespace {

// In the order of the states.
constexpr bool TimeLineSet::*stateFlags[] = {&TimeLineSet::NonStartClr,    &TimeLineSet::NotStartDelayClr,
                                             &TimeLineSet::ProcessingClr,  &TimeLineSet::ProcessingDelayClr,
                                             &TimeLineSet::FinishClr,      &TimeLineSet::FinishAheadClr,
                                             &TimeLineSet::FinishBehindClr};
static_assert(std::size(stateFlags) == TaskState::count);

bool isState(int state)
{
    return state >= 0 && state < TaskState::count;
}

} // namespace

int shownState(int state, const TimeLineSet& set)
{
    if (set.DisplayDelay)
        return state;
    switch (state) {
    case TaskState::NotStartedLate:
        return TaskState::NotStarted;
    case TaskState::InProgressLate:
        return TaskState::InProgress;
    case TaskState::FinishedLate:
        return TaskState::Finished;
    default:
        return state;
    }
}

bool isStateFlagged(int state, const TimeLineSet& set)
{
    return isState(state) && set.*stateFlags[state];
}

bool isStatePainted(int state, const TimeLineSet& set)
{
    return set.DisplayStateColor && isStateFlagged(state, set);
}

void setStateFlag(int state, bool isOn, TimeLineSet& set)
{
    if (isState(state))
        set.*stateFlags[state] = isOn;
}

QColor stateColour(int state, const TimeLineSet& set, const QList<QColor>& colours)
{
    const int shown = shownState(state, set);
    return isStatePainted(shown, set) ? colours.value(shown) : QColor();
}

ElementPaint elementPaint(const SimulationState& state, const TimeLineSet& set, const QList<QColor>& colours)
{
    ElementPaint paint;
    paint.growth = state.growth;
    paint.colour = stateColour(state.state, set, colours);
    switch (state.presence) {
    case SimulationPresence::Growing:
        // At work, but nothing of it stands: no sheet on the ground, which would be drawn in the ground
        // itself.
        if (state.share <= 0.0 && state.growth != Kv::GrowAppear) {
            if (state.growth != Kv::GrowDisappear && paint.colour.isValid())
                paint.kind = ElementPaint::Hint;
            break;
        }
        Q_FALLTHROUGH();
    case SimulationPresence::Complete:
        paint.kind = ElementPaint::Solid;
        paint.share = state.share;
        break;
    case SimulationPresence::Absent:
        if (paint.colour.isValid() &&
            (state.state == TaskState::NotStarted || state.state == TaskState::NotStartedLate))
            paint.kind = ElementPaint::Hint;
        break;
    case SimulationPresence::Hidden:
        break;
    }
    return paint;
}
