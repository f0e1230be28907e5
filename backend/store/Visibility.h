#pragma once

#include <QMap>
#include <QString>

namespace PlanService {

enum class ReadScope
{
    None,
    Own, ///< what the user created
    All,
};

/// What a user may see in the lists of one project.
struct Visibility
{
    QString user;
    QMap<QString, ReadScope> categories; ///< those with rights of their own
    ReadScope elsewhere = ReadScope::None;
};

} // namespace PlanService
