#pragma once

#include "BuildingModel.h"

#include <setting/KvGrowthType.h>

#include <QtCore/QByteArray>
#include <QtGui/QColor>

/// How each element of a building is drawn: what the shader looks up for each, kept in the bytes of two
/// textures, and which rows of these have changed since they were last taken.
class ElementLooks
{
public:
    static constexpr int width = 1024; ///< elements in a row of the textures

    enum class Solidity
    {
        None, ///< nothing is drawn
        Hint, ///< one pixel in four: what is to come
        Solid,
    };
    struct Look
    {
        Solidity solidity = Solidity::None;
        QColor colour;      ///< not looked at for none
        double share = 1.0; ///< of a solid element, from where it grows; 0 to 1
        Kv::QGrowthType growth = Kv::GrowBottomToTop;
    };

    /// All elements undrawn.
    explicit ElementLooks(const BuildingModel& model);

    void set(int element, const Look& look);
    const Look& look(int element) const { return m_looks.at(element); }
    /// How far the element is lifted, in the unit of the model.
    void setLift(int element, float lift);
    float lift(int element) const;
    /// Mixes a colour over that of the element; an undrawn element stays so.
    void setHighlighted(int element, bool isHighlighted);
    bool isHighlighted(int element) const { return m_isHighlighted.at(element); }

    /// The box of what is drawn of an element, lifted; nothing for an undrawn one and for hints.
    Box drawnBox(int element) const;
    /// The part of the axis (0 x, 1 y, 2 z) that is kept of a growing element: points beyond it are drawn at
    /// its end.
    struct Clip
    {
        int axis = 1;
        float low = 0.0F;
        float high = 0.0F;
    };
    static Clip clip(const Box& box, Kv::QGrowthType growth, double share);

    int rows() const { return m_rows; }
    /// RGBA, 8 bits each; alpha is 0 for none, 128 for a hint, 255 for solid.
    const QByteArray& colours() const { return m_colours; }
    /// RGBA, floats: low and high end of the clip, its axis, the lift.
    const QByteArray& shapes() const { return m_shapes; }

    struct Rows
    {
        int first = 0;
        int count = 0;
    };
    /// Changed rows since the last call, as one stretch of each texture.
    Rows takeChangedColours();
    Rows takeChangedShapes();

    static QColor highlight() { return {255, 170, 0}; }

private:
    void writeColour(int element);
    void writeShape(int element);

    const BuildingModel& m_model;
    int m_rows;
    QVector<Look> m_looks;
    QVector<bool> m_isHighlighted;
    QByteArray m_colours;
    QByteArray m_shapes;
    Rows m_changedColours;
    Rows m_changedShapes;
};
