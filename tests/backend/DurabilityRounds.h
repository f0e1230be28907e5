#pragma once

// What the tests of durability share on either database.

#include "MixedLoad.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

namespace KvTest {

/// KV_SEED, or another one each time.
inline quint32 seedOfRun()
{
    bool given = false;
    const quint32 seed = qEnvironmentVariable("KV_SEED").toUInt(&given);
    return given ? seed : QRandomGenerator::system()->generate();
}

inline int rounds(int usual)
{
    return qEnvironmentVariable("KV_ROUNDS", QString::number(usual)).toInt();
}

inline QString textOf(const LoadCounts& counts)
{
    return "%1 changes acknowledged, %2 refused (%3 done), %4 without an answer (%5 done)"_s
        .arg(counts.acknowledged)
        .arg(counts.refused)
        .arg(counts.refusedButDone)
        .arg(counts.unanswered)
        .arg(counts.unansweredButDone);
}

/// Kills the service under load again and again, at any moment, and starts it on the same database.
/// @return what was wrong, empty: nothing; the service runs then.
inline QString killRounds(ServiceProcess& service, MixedLoad& load, QRandomGenerator& random, int count)
{
    for (int round = 0; round <= count; ++round) {
        if (!service.start({"--create"_s})) {
            return "%1: %2"_s.arg(round).arg(service.failure());
        }
        const QString wrong = load.settle(service.port());
        if (!wrong.isEmpty()) {
            return "after kill %1: %2"_s.arg(round).arg(wrong);
        }
        if (round == count) {
            break;
        }
        load.start(service.port());
        if (!load.waitForChanges(random.bounded(1, 10))) {
            return "after kill %1: there were no changes"_s.arg(round);
        }
        QElapsedTimer timer;
        timer.start();
        // At any moment of a change.
        const qint64 wait = random.bounded(20000) * qint64(1000);
        while (timer.nsecsElapsed() < wait) {
        }
        service.kill();
        load.stop();
    }
    return QString();
}

} // namespace KvTest
