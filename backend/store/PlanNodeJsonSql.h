#pragma once

/// The opening of a node's object with what is derived, to be followed by the rest of the stored document.
/// Expects the node as n and its plan, which may be missing, as p.
#define PLANSERVICE_NODE_JSON                                                                                \
    "'{\"planName\":' || json_quote(coalesce(p.name, ''))"                                                   \
    " || CASE WHEN n.startDate = n.finishDate THEN ',\"milestone\":true' ELSE ',\"milestone\":false' END"    \
    " || CASE WHEN n.uniqueId > 0 AND EXISTS (SELECT 1 FROM planNodes c"                                     \
    "         WHERE c.planId = n.planId AND c.parentTaskId = n.uniqueId AND c.id <> n.id)"                   \
    "    THEN ',\"summary\":true,' ELSE ',\"summary\":false,' END"

/// The documents that the node names, in its order, to stand behind the opening. Most nodes have none, which
/// is told without reading the node's text as JSON.
#define PLANSERVICE_NODE_DOCUMENTS                                                                           \
    " || CASE WHEN instr(n.document, '\"documentIds\":[]') THEN '\"documents\":[]'"                          \
    "    ELSE '\"documents\":' || (SELECT json_group_array(json(document)) FROM"                             \
    "     (SELECT d.document AS document FROM json_each(n.document, '$.documentIds') e"                      \
    "      JOIN documents d ON d.id = e.value AND d.projectId = n.projectId ORDER BY e.key)) END || ','"
