#pragma once

#include "Commands.h"

#include <QSaveFile>

namespace PlanService {

/// A file that is there as a whole once it is committed, and otherwise as it was. Throws Failure naming it.
class SampleFile
{
public:
    explicit SampleFile(const QString& path);

    void write(const QByteArray& piece);
    void commit();

private:
    QSaveFile m_file;
};

} // namespace PlanService
