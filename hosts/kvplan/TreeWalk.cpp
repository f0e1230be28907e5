#include "TreeWalk.h"

#include <QtCore/QVector>

void walkTree(const QList<KvPlanNode>& roots, int depth,
              const std::function<void(const KvPlanNode& node, int level)>& enter,
              const std::function<void()>& leave)
{
    struct Place
    {
        const QList<KvPlanNode>* siblings;
        int next;
    };
    QVector<Place> path{{&roots, 0}};
    for (;;) {
        Place& place = path.last();
        const int level = path.size() - 1;
        if (place.next < place.siblings->size()) {
            const KvPlanNode& node = place.siblings->at(place.next++);
            enter(node, level);
            if (level + 1 < depth)
                path.append({&node.children, 0});
            else
                leave();
        } else if (level > 0) {
            path.removeLast();
            leave();
        } else {
            return;
        }
    }
}
