#pragma once

#include <model/KvPlanNode.h>

#include <functional>

/// Visits the first @p depth levels of a tree in reading order, a node before its children, and once more
/// after them. Does not recurse, as a tree may be as deep as it is large. Levels count from 0.
void walkTree(
    const QList<KvPlanNode>& roots, int depth,
    const std::function<void(const KvPlanNode& node, int level)>& enter,
    const std::function<void()>& leave = [] {});
