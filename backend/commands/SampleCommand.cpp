#include "SampleOptionsText.h"

#include <QSaveFile>

namespace PlanService {

namespace {

void writeTo(QSaveFile& file, const QByteArray& piece)
{
    if (file.write(piece) != piece.size()) {
        throw Failure(QStringLiteral("cannot write '%1': %2").arg(file.fileName(), file.errorString()));
    }
}

} // namespace

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
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        throw Failure(QStringLiteral("cannot write '%1': %2; name a file in a folder you may write to")
                          .arg(path, file.errorString()));
    }
    writeSample(project, [&file](const QByteArray& piece) { writeTo(file, piece); });
    if (!file.commit()) {
        throw Failure(QStringLiteral("cannot write '%1': %2").arg(path, file.errorString()));
    }
    return 0;
}

} // namespace PlanService
