#include "SamplePlan.h"

#include <ServiceProcess.h>

#include <QtCore/QMap>

#include <cstdio>
#include <cstdlib>

QByteArray samplePlanJson(int nodes)
{
    const KvTest::ServiceRun run = KvTest::ServiceProcess::run(
        {QStringLiteral("sample"), QStringLiteral("--nodes"), QString::number(nodes)});
    if (run.exitCode != 0) {
        std::fprintf(stderr, "no sample plan of %d nodes: %s\n", nodes, run.errors.constData());
        std::exit(2);
    }
    return run.output;
}

const QByteArray& keptSamplePlanJson(int nodes)
{
    static QMap<int, QByteArray> plans;
    if (!plans.contains(nodes))
        plans.insert(nodes, samplePlanJson(nodes));
    return *plans.constFind(nodes);
}
