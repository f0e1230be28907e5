#pragma once

#include "SimulationViewer.h"

#include <QtWidgets/QDockWidget>

#include <hosts/simulation3d/Models.h>

/// A plan whose elements have known places and, at known dates, known states, and the window that shows it.
namespace SimulationStreet {

constexpr auto planned = BuildingScene::Planned;
constexpr auto actual = BuildingScene::Actual;
constexpr Kv::QGrowthType directions[] = {Kv::GrowFrontToBack, Kv::GrowBackToFront, Kv::GrowLeftToRight,
                                          Kv::GrowRightToLeft, Kv::GrowTopToBottom, Kv::GrowBottomToTop,
                                          Kv::GrowAppear,      Kv::GrowDisappear};
constexpr int directionCount = int(std::size(directions));
constexpr int none = -1; // no element, where a state would stand

inline QDateTime at(int month, int day, int hour = 0)
{
    return QDateTime(QDate(2026, month, day), QTime(hour, 0));
}

inline QString slab(int state)
{
    return QStringLiteral("slab-%1").arg(state);
}

inline QString cube(Kv::QGrowthType direction)
{
    return QStringLiteral("cube-%1").arg(int(direction));
}

// Slabs on the ground, one a state, each 2 x 1 x 4; in front of them and a storey higher cubes of 2 x 2 x 2,
// one a direction; behind them what is hidden, what is never shown, and what no task names.
inline QVector<NamedBox> street()
{
    QVector<NamedBox> boxes{{QStringLiteral("first floor"), {}, {}, none},
                            {QStringLiteral("second floor"), {}, {}, none}};
    const auto add = [&boxes](const QString& name, const QVector3D& low, const QVector3D& size, int floor) {
        boxes.append({name, low, low + size, floor});
    };
    for (int state = 0; state < TaskState::count; ++state)
        add(slab(state), {float(state) * 3, 0, 0}, {2, 1, 4}, 0);
    for (int i = 0; i < directionCount; ++i)
        add(cube(directions[i]), {float(i) * 3, 4, 8}, {2, 2, 2}, 1);
    const QStringList behind{QStringLiteral("hidden"), QStringLiteral("hidden when finished"),
                             QStringLiteral("outside"), QStringLiteral("unnamed")};
    for (int i = 0; i < behind.size(); ++i)
        add(behind.at(i), {float(i) * 3, 0, -6}, {2, 1, 4}, 0);
    return boxes;
}

inline KvPlanNode task(const QString& element, const QDateTime& start, const QDateTime& finish,
                       const QDateTime& actualStart = {}, const QDateTime& actualFinish = {})
{
    KvPlanNode node;
    node.name = element;
    node.startDate = start;
    node.finishDate = finish;
    node.actualStartDate = actualStart;
    node.actualFinishDate = actualFinish;
    node.finishedPercentage = actualFinish.isValid() ? 100.0 : actualStart.isValid() ? 50.0 : 0.0;
    node.dynamicEffect = Kv::GrowBottomToTop;
    node.links.insert(QStringLiteral("street"), {element});
    return node;
}

inline QList<KvPlanNode> tasks()
{
    QList<KvPlanNode> nodes;
    nodes.append(task(slab(0), at(7, 1), at(7, 10)));
    nodes.append(task(slab(1), at(6, 10), at(6, 30)));
    nodes.append(task(slab(2), at(6, 10), at(6, 20), at(6, 10)));
    nodes.append(task(slab(3), at(6, 1), at(6, 12), at(6, 1)));
    nodes.append(task(slab(4), at(6, 1), at(6, 10), at(6, 1), at(6, 10)));
    nodes.append(task(slab(5), at(6, 1), at(6, 10), at(6, 1), at(6, 8)));
    nodes.append(task(slab(6), at(6, 1), at(6, 10), at(6, 1), at(6, 12)));
    for (const Kv::QGrowthType direction : directions) {
        nodes.append(task(cube(direction), at(6, 10), at(6, 20), at(6, 10), at(6, 20)));
        nodes.last().dynamicEffect = direction;
    }
    nodes.append(task(QStringLiteral("hidden"), at(6, 1), at(6, 10), at(6, 1), at(6, 10)));
    nodes.last().entityHideDate = at(6, 16);
    nodes.append(task(QStringLiteral("hidden when finished"), at(6, 1), at(6, 18), at(6, 1), at(6, 18)));
    nodes.last().entityHideDate = at(6, 3);
    nodes.last().entityHideType = 1;
    nodes.append(task(QStringLiteral("outside"), at(6, 1), at(6, 10), at(6, 1), at(6, 10)));
    nodes.last().displaySimulation = false;
    nodes.append(task(QString(), at(5, 1), at(8, 1))); // so long is the period
    nodes.last().links.clear();
    int number = 0;
    for (KvPlanNode& node : nodes) {
        node.planNodeId = ++number;
        node.uniqueId = number;
        if (node.name.isEmpty())
            node.name = QStringLiteral("The whole");
    }
    return nodes;
}

// What has to be at a place of a view.
struct Expected
{
    QString what;
    BuildingScene::View view;
    QVector3D place;
    QColor colour;
    bool isHint = false; // one pixel in four, the others as behind
};

// How a slab is shown.
struct Shown
{
    int state;
    double share; // 0: not built yet
};
using Shows = QVector<Shown>; // slab by slab

struct Street : SimulationViewer
{
    QStringList floors;

    bool openStreet(const QString& model)
    {
        window.resize(1200, 900);
        if (!openBuilding(model))
            return false;
        window.resizeDocks({window.findChild<QDockWidget*>(QStringLiteral("simulationDock"))}, {700},
                           Qt::Vertical);
        page().selectTasks({});
        floors = simulation().model()->floors();
        setSet(TimeLineSet());
        return floors.size() == 2;
    }

    SimulationSettings& settings() { return *simulation().settings(); }
    void setSet(const TimeLineSet& set) { settings().setSet(set); }
    void goTo(const QDateTime& date) { simulation().playback()->setDate(date); }

    QStringList selectedNames()
    {
        QStringList names;
        for (const int position : page().selectedTasks())
            names.append(model().tasks().at(position).node.name);
        names.sort();
        return names;
    }

    QColor background() { return simulation().palette().color(QPalette::Base); }
    QColor stateColour(int state) { return settings().colours().at(state); }

    /// @param turn degrees from the front to the right, @param steepness from the ground upwards
    void lookFrom(double turn, double steepness)
    {
        SceneCamera camera;
        camera.orbit(-35.0 - turn, steepness - 28.0); // which it has at first
        Box all = simulation().model()->box();
        all.high.setY(all.high.y() + 6.0F); // floors that stand apart
        camera.fitFromHere(all, view().aspect());
        view().setCamera(camera);
    }

    QPoint seenAt(const QVector3D& place, BuildingScene::View which)
    {
        const bool areTwo = view().isShown(planned) && view().isShown(actual);
        const QPointF at = view().camera().seenAt(place, view().aspect());
        return {int((areTwo ? (at.x() + int(which)) / 2.0 : at.x()) * view().width()),
                int(at.y() * view().height())};
    }

    static bool isAbout(const QColor& one, const QColor& other)
    {
        constexpr int rounding = 2;
        return qAbs(one.red() - other.red()) <= rounding && qAbs(one.green() - other.green()) <= rounding &&
               qAbs(one.blue() - other.blue()) <= rounding;
    }

    QString fault(const QImage& image, const Expected& expected)
    {
        const QPoint middle = seenAt(expected.place, expected.view);
        const QRect square(middle - QPoint(1, 1), QSize(4, 4)); // all of it is seen, or nothing
        if (!image.rect().contains(square))
            return QStringLiteral("%1 is not in the picture").arg(expected.what);
        int coloured = 0;
        int bare = 0;
        for (int y = square.top(); y <= square.bottom(); ++y) {
            for (int x = square.left(); x <= square.right(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                coloured += isAbout(pixel, expected.colour) ? 1 : 0;
                bare += isAbout(pixel, background()) ? 1 : 0;
            }
        }
        const int all = square.width() * square.height();
        if (expected.isHint ? coloured == all / 4 && bare == all - all / 4 : coloured == all)
            return {};
        return QStringLiteral("%1 has %2 pixels of %3 in place of %4, the middle one is %5")
            .arg(expected.what)
            .arg(coloured)
            .arg(expected.colour.name())
            .arg(expected.isHint ? all / 4 : all)
            .arg(image.pixelColor(middle).name());
    }

    /// Looks at what is drawn until it is as expected, twice in a row; what is not yet is told.
    QString faults(const QVector<Expected>& all)
    {
        QStringList found;
        int right = 0;
        const bool isRight = QTest::qWaitFor(
            [&] {
                found.clear();
                const QImage image = screen();
                for (const Expected& expected : all) {
                    const QString text = fault(image, expected);
                    if (!text.isEmpty())
                        found.append(text);
                }
                right = found.isEmpty() ? right + 1 : 0;
                return right == 2;
            },
            10000);
        return isRight ? QString() : QStringLiteral("not as expected: ") + found.join(QStringLiteral("; "));
    }

    /// The state whose slab is @p number, as the settings tell it to be shown.
    Expected slabIn(int number, BuildingScene::View which, int state, double share)
    {
        const QString what = QStringLiteral("%1 of the %2")
                                 .arg(slab(number), QLatin1String(which == planned ? "plan" : "site"));
        const bool isStanding = share > 0.0;
        const QVector3D top(float(number) * 3 + 1, isStanding ? float(share) : 1.0F, 2);
        const int shown = shownState(state, settings().set());
        if (isStatePainted(shown, settings().set()))
            return {what, which, top, stateColour(shown), !isStanding};
        return {what, which, top, isStanding ? SimulatedBuilding::material() : background(), false};
    }
};

} // namespace SimulationStreet
