#include "VisibilitySql.h"

namespace PlanService {

void addVisibility(const Visibility& visible, const SqlCondition& own, SqlCondition& condition)
{
    if (visible.categories.isEmpty() && visible.elsewhere == ReadScope::All) {
        return;
    }
    QStringList choices;
    QVariantList parameters;
    for (auto it = visible.categories.begin(); it != visible.categories.end(); ++it) {
        if (it.value() != ReadScope::None) {
            choices += it.value() == ReadScope::All ? QStringLiteral("category = ?")
                                                    : QStringLiteral("(category = ? AND %1)").arg(own.text);
            parameters += it.key();
            if (it.value() == ReadScope::Own) {
                parameters += own.parameters;
            }
        }
    }
    if (visible.elsewhere != ReadScope::None) {
        QStringList others;
        for (auto it = visible.categories.begin(); it != visible.categories.end(); ++it) {
            others += QStringLiteral("category <> ?");
            parameters += it.key();
        }
        if (visible.elsewhere == ReadScope::Own) {
            others += own.text;
            parameters += own.parameters;
        }
        choices += QLatin1Char('(') + others.join(QLatin1String(" AND ")) + QLatin1Char(')');
    }
    condition.also(choices.isEmpty()
                       ? QStringLiteral("FALSE")
                       : QLatin1Char('(') + choices.join(QLatin1String(" OR ")) + QLatin1Char(')'),
                   parameters);
}

SqlCondition worksOn(const QString& user)
{
    return {QStringLiteral("{position}(people, ?) > 0"), {peopleText({user})}};
}

SqlCondition ownNode(const QString& user)
{
    SqlCondition own = worksOn(user);
    own.text = QStringLiteral("(createdBy = ? OR %1)").arg(own.text);
    own.parameters.prepend(user.isNull() ? QStringLiteral("") : user);
    return own;
}

} // namespace PlanService
