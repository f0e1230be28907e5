#pragma once

#include <plandata/KvPlanData.h>

#include <QtCore/QList>

/// Copies of the facade. A host can make one but not destroy it, so they are kept until the program ends.
inline KvPlanData* copyOf(const KvPlanData& facade)
{
    static QList<KvPlanData*>& kept = *new QList<KvPlanData*>;
    kept.append(new KvPlanData(facade));
    return kept.last();
}
