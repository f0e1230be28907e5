#include "SampleFile.h"
#include "SampleOptionsText.h"

namespace PlanService {

int runSample(const QStringList& arguments)
{
    Options options(
        QStringLiteral("sample"),
        QStringLiteral("Writes a sample plan as the service sends it, without a database. The\n"
                       "options of a sample are those of planservice seed and give the same plan."));
    addSampleOptions(options);
    options.add(QStringLiteral("output"), QStringLiteral("Write to this file instead of stdout."),
                QStringLiteral("FILE"));
    if (!options.parse(arguments)) {
        return 0;
    }
    const SampleProject project(readSampleOptions(options));
    const QString path = options.text(QStringLiteral("output"));
    if (path.isEmpty()) {
        writeSample(project, [](const QByteArray& piece) {
            std::fwrite(piece.constData(), 1, static_cast<std::size_t>(piece.size()), stdout);
        });
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
            throw Failure(QStringLiteral("cannot write the sample to stdout; is the disk full?"));
        }
        return 0;
    }
    SampleFile file(path);
    writeSample(project, [&file](const QByteArray& piece) { file.write(piece); });
    file.commit();
    return 0;
}

} // namespace PlanService
