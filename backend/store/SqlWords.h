#pragma once

#include <QHash>
#include <QString>

namespace PlanService {

/// What the databases call differently. SQL text is written once for all of them, with a word in braces where
/// they differ: "{position}(a, b)". A word may have an argument, "{text remark}" or "{text n.remark}". In
/// what stands for it %1 is the argument; where there is a %2 too, %1 is what leads up to the argument's
/// point, "n." or nothing, and %2 the rest.
///
/// | word           | stands for                                                                          |
/// |----------------|-------------------------------------------------------------------------------------|
/// | bytes, json    | types: of UTF-8 that is carried as it is; of JSON text that is read                   |
/// | quote          | function: the text as a JSON string                                                  |
/// | position       | function: where the second text begins in the first, from 1; 0: nowhere               |
/// | elements       | function: rows of "value", the elements of a JSON list                                |
/// | numbered E     | behind elements: its alias E, with the place in the list as "key"                     |
/// | array, join    | aggregates: a JSON list; texts with a text between them                               |
/// | object         | function: a JSON object of names and values                                           |
/// | text, number, real, flag, list | a member of the column "document"; NULL when it is not there          |
/// | hex N          | the number in 8 hex digits                                                            |
/// | loose C        | the column, without its index                                                         |
/// | by I           | behind a table: read along this index                                                 |
/// | then           | a join whose left side is read first                                                  |
/// | again ORDER    | the order once more, where a join does not keep that of its left side                 |
/// | changed, kept  | behind a row that this transaction is going to change, or needs to stay               |
using SqlWords = QHash<QString, QString>;

/// The text in the words of one database.
QString inWords(const QString& sql, const SqlWords& words);

} // namespace PlanService
