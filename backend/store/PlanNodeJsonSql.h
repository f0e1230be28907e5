#pragma once

/// The opening of a node's object with what is derived, to be followed by the rest of the stored document.
/// Expects the node as n and its plan, which may be missing, as p.
#define PLANSERVICE_NODE_JSON                                                                                \
    "'{\"planName\":' || CAST({quote}(coalesce(p.name, '')) AS TEXT)"                                        \
    " || CASE WHEN n.startDate = n.finishDate THEN ',\"milestone\":true' ELSE ',\"milestone\":false' END"    \
    " || CASE WHEN n.uniqueId > 0 AND EXISTS (SELECT 1 FROM planNodes c"                                     \
    "         WHERE c.planId = n.planId AND c.parentTaskId = n.uniqueId AND c.id <> n.id)"                   \
    "    THEN ',\"summary\":true,' ELSE ',\"summary\":false,' END"

/// The documents that the node names, in its order, to stand behind the opening. Most nodes have none, which
/// is told without reading the node's text as JSON.
#define PLANSERVICE_NODE_DOCUMENTS                                                                           \
    " || CASE WHEN {position}(n.document, '\"documentIds\":[]') > 0 THEN '\"documents\":[]'"                 \
    "    ELSE '\"documents\":' || ('[' || coalesce((SELECT {join}(document, ',') FROM"                       \
    "     (SELECT d.document AS document FROM {elements}({list n.documentIds}) {numbered e}"                 \
    "      JOIN documents d ON d.id = e.value AND d.projectId = n.projectId ORDER BY e.key) d), '') || "     \
    "']') END || ','"
