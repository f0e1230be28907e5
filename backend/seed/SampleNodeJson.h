#pragma once

#include "../json/JsonWriter.h"
#include "SampleProject.h"
#include "SampleSchedule.h"

#include <QHash>

namespace PlanService {

QString inLanguage(const SampleName& name, SampleLanguage language);

/// Turns scheduled items into records of the store.
class SampleNodeJson
{
public:
    SampleNodeJson(const PlanRecord& plan, const SampleOptions& options);

    /// @param number of the tower from 1, or 0 when it is the only one; @param nodesBefore nodes of earlier
    /// towers.
    void beginTower(int number, int nodesBefore);

    SampleNode node(const std::vector<SampleItem>& items, std::size_t index, SampleRandom& random);
    DocumentRecord document(const std::vector<SampleItem>& items, std::size_t index);

private:
    int rowOf(std::size_t index) const { return m_nodesBefore + static_cast<int>(index) + 1; }
    int uniqueIdOf(std::size_t index) const;
    QString documentIdOf(std::size_t index) const;
    QString nameOf(const SampleItem& item) const;
    QString dateText(int day, bool evening);
    void writePredecessors(const std::vector<SampleItem>& items, std::size_t index);
    QStringList entitiesOf(const SampleItem& item, SampleRandom& random) const;
    void writeEntities(const SampleItem& item, const QStringList& entities);
    void writeBills(const SampleItem& item);

    const PlanRecord& m_plan;
    const SampleOptions& m_options;
    int m_tower = 0;
    int m_nodesBefore = 0;
    QHash<int, QString> m_days;
    JsonWriter m_json;
};

} // namespace PlanService
