#pragma once

#include <QByteArray>
#include <QRandomGenerator>

#include <atomic>

namespace PlanService {

/// A name for a request that no other has, in this process or another: it is told to the client and stands in
/// every line that the log has on the request.
inline QByteArray nextRequestId()
{
    static const QByteArray process =
        QByteArray::number(QRandomGenerator::system()->generate(), 16).rightJustified(8, '0');
    static std::atomic<quint64> count{0};
    return process + '-' + QByteArray::number(count.fetch_add(1) + 1);
}

} // namespace PlanService
