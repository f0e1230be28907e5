#include "ElementLooks.h"

#include <algorithm>

namespace {

constexpr int colourSize = 4;
constexpr int shapeSize = 4 * sizeof(float);
constexpr int liftAt = 3;

void touch(ElementLooks::Rows& rows, int row)
{
    if (rows.count == 0) {
        rows = {row, 1};
        return;
    }
    const int last = std::max(rows.first + rows.count - 1, row);
    rows.first = std::min(rows.first, row);
    rows.count = last - rows.first + 1;
}

ElementLooks::Rows taken(ElementLooks::Rows& rows)
{
    const ElementLooks::Rows result = rows;
    rows = {};
    return result;
}

} // namespace

ElementLooks::ElementLooks(const BuildingModel& model)
    : m_model(model)
    , m_rows(std::max(1, (model.elements().size() + width - 1) / width))
    , m_looks(model.elements().size())
    , m_isHighlighted(model.elements().size())
    , m_colours(m_rows * width * colourSize, '\0')
    , m_shapes(m_rows * width * shapeSize, '\0')
{
    for (int i = 0; i < m_looks.size(); ++i)
        writeShape(i);
    m_changedColours = {0, m_rows};
    m_changedShapes = {0, m_rows};
}

void ElementLooks::set(int element, const Look& look)
{
    Look& kept = m_looks[element];
    const bool isOtherShape = kept.share != look.share || kept.growth != look.growth;
    const bool isOtherColour = kept.solidity != look.solidity || kept.colour != look.colour;
    kept = look;
    if (isOtherColour)
        writeColour(element);
    if (isOtherShape)
        writeShape(element);
}

void ElementLooks::setLift(int element, float lift)
{
    if (this->lift(element) == lift)
        return;
    reinterpret_cast<float*>(m_shapes.data() + element * shapeSize)[liftAt] = lift;
    touch(m_changedShapes, element / width);
}

float ElementLooks::lift(int element) const
{
    return reinterpret_cast<const float*>(m_shapes.constData() + element * shapeSize)[liftAt];
}

void ElementLooks::setHighlighted(int element, bool isHighlighted)
{
    if (m_isHighlighted.at(element) == isHighlighted)
        return;
    m_isHighlighted[element] = isHighlighted;
    writeColour(element);
}

void ElementLooks::writeColour(int element)
{
    const Look& look = m_looks.at(element);
    QColor colour = look.colour;
    if (m_isHighlighted.at(element)) {
        const auto mixed = [](int of, int with) {
            return (of + 2 * with) / 3;
        };
        colour = QColor(mixed(colour.red(), highlight().red()), mixed(colour.green(), highlight().green()),
                        mixed(colour.blue(), highlight().blue()));
    }
    const int alpha = look.solidity == Solidity::None ? 0 : look.solidity == Solidity::Hint ? 128 : 255;
    char* const out = m_colours.data() + element * colourSize;
    out[0] = char(colour.red());
    out[1] = char(colour.green());
    out[2] = char(colour.blue());
    out[3] = char(alpha);
    touch(m_changedColours, element / width);
}

void ElementLooks::writeShape(int element)
{
    const Look& look = m_looks.at(element);
    const Clip kept = clip(m_model.elements().at(element).box, look.growth, look.share);
    float* const out = reinterpret_cast<float*>(m_shapes.data() + element * shapeSize);
    out[0] = kept.low;
    out[1] = kept.high;
    out[2] = float(kept.axis);
    touch(m_changedShapes, element / width);
}

ElementLooks::Clip ElementLooks::clip(const Box& box, Kv::QGrowthType growth, double share)
{
    constexpr int x = 0;
    constexpr int y = 1; // upwards
    constexpr int z = 2; // towards the viewer, whose side is the front
    int axis = y;
    bool fromLow = true;
    switch (growth) {
    case Kv::GrowFrontToBack:
        axis = z;
        fromLow = false;
        break;
    case Kv::GrowBackToFront:
        axis = z;
        break;
    case Kv::GrowLeftToRight:
        axis = x;
        break;
    case Kv::GrowRightToLeft:
        axis = x;
        fromLow = false;
        break;
    case Kv::GrowTopToBottom:
        fromLow = false;
        break;
    case Kv::GrowAppear: // all of it, for as long as there is any
        share = 1.0;
        break;
    case Kv::GrowDisappear: // taken down from its top
    case Kv::GrowBottomToTop:
        break;
    }
    Clip kept{axis, box.low[axis], box.high[axis]};
    const float length = (kept.high - kept.low) * float(std::min(1.0, std::max(0.0, share)));
    if (share >= 1.0) // to the last bit, whatever is lost in adding
        return kept;
    if (fromLow)
        kept.high = kept.low + length;
    else
        kept.low = kept.high - length;
    return kept;
}

Box ElementLooks::drawnBox(int element) const
{
    const Look& look = m_looks.at(element);
    if (look.solidity != Solidity::Solid)
        return Box::nothing();
    Box box = m_model.elements().at(element).box;
    const Clip kept = clip(box, look.growth, look.share);
    box.low[kept.axis] = kept.low;
    box.high[kept.axis] = kept.high;
    const float up = lift(element);
    box.low.setY(box.low.y() + up);
    box.high.setY(box.high.y() + up);
    return box;
}

ElementLooks::Rows ElementLooks::takeChangedColours()
{
    return taken(m_changedColours);
}

ElementLooks::Rows ElementLooks::takeChangedShapes()
{
    return taken(m_changedShapes);
}
