// Runs a fuzz target over the inputs that are kept, and over small changes of each, without any fuzzer.

#include "FuzzTarget.h"
#include "JsonMutation.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int ChangesOfEach = 60;

void run(const QByteArray& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                           static_cast<std::size_t>(input.size()));
}

QStringList filesIn(const QString& folder)
{
    QStringList files;
    QDirIterator entries(folder, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext())
        files.append(entries.next());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

// Each argument is a folder of inputs. What fails ends the program; the last file named is then the one.
int main(int argc, char** argv)
{
    std::mt19937 random(1); // the same changes each time
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        const QStringList inFolder = filesIn(QFile::decodeName(argv[i]));
        for (const QString& name : inFolder) {
            QFile file(name);
            if (!file.open(QIODevice::ReadOnly))
                KvFuzz::fail(QStringLiteral("cannot read ") + name);
            std::printf("%s\n", QFile::encodeName(name).constData());
            std::fflush(stdout);
            const QByteArray input = file.readAll();
            run(input);
            QByteArray changed = input;
            for (int change = 0; change < ChangesOfEach; ++change) {
                changed = KvFuzz::mutated(change % 6 == 0 ? input : changed, random);
                run(changed);
            }
            ++files;
        }
    }
    if (files == 0)
        KvFuzz::fail(QStringLiteral("no inputs in the folders given"));
    std::printf("%d inputs, %d changes of each\n", files, ChangesOfEach);
    return 0;
}
