#include "SamplePlan.h"

#include <ServiceProcess.h>

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
