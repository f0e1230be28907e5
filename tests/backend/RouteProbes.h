#pragma once

#include <QByteArray>
#include <QStringList>
#include <QVector>

namespace KvTest {

/// A request that a route answers well as long as its sender may make it, and the rights that this takes:
/// those of planservice.md, or "list" for lists, which anybody gets who may read something in the project.
struct RouteProbe
{
    QByteArray route; ///< "GET /task-service/plans/{planId}"
    QByteArray query;
    QByteArray body;
    QStringList needs;

    QByteArray method() const { return route.left(route.indexOf(' ')); }
};

/// What a probe's path leads to.
struct RouteWorld
{
    QByteArray project;
    QByteArray plan;
    QByteArray node;
    QByteArray victimPlan; ///< for DELETE
    QByteArray victimNode;
};

/// One for every route of the service; a route without one fails a test.
const QVector<RouteProbe>& routeProbes();

/// The probe's path and query in this world.
QByteArray targetOf(const RouteProbe& probe, const RouteWorld& world);
QByteArray bodyOf(const RouteProbe& probe, const RouteWorld& world);

} // namespace KvTest
