#include "SampleFile.h"

namespace PlanService {

SampleFile::SampleFile(const QString& path)
    : m_file(path)
{
    if (!m_file.open(QIODevice::WriteOnly)) {
        throw Failure(QStringLiteral("cannot write '%1': %2; name a file in a folder you may write to")
                          .arg(path, m_file.errorString()));
    }
}

void SampleFile::write(const QByteArray& piece)
{
    if (m_file.write(piece) != piece.size()) {
        throw Failure(QStringLiteral("cannot write '%1': %2").arg(m_file.fileName(), m_file.errorString()));
    }
}

void SampleFile::commit()
{
    if (!m_file.commit()) {
        throw Failure(QStringLiteral("cannot write '%1': %2").arg(m_file.fileName(), m_file.errorString()));
    }
}

} // namespace PlanService
