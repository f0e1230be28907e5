#pragma once

#include <QString>

#include <stdexcept>

namespace PlanService {

/// Something the service cannot do. what() is one line for the operator: what failed, with which value, what
/// to try. It may hold paths and SQL, so it goes to the terminal or into the log and never into a reply.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const QString& message)
        : std::runtime_error(message.toStdString())
    {
    }
    QString message() const { return QString::fromUtf8(what()); }
};

} // namespace PlanService
