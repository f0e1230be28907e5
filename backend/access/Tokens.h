#pragma once

#include "../store/Store.h"

namespace PlanService {

/// A new token's text: 32 random bytes, base64url. It is shown once and stored nowhere.
QByteArray newToken();

/// What the store keeps in a token's place.
QByteArray tokenHash(const QByteArray& token);

/// Reads "read=all,create,edit,delete,export" (any part may be missing; "read" alone means "read=all") into
/// the record. Throws Failure naming the word that is no right.
void readRights(const QString& text, RightsRecord& rights);

/// The same form, for people.
QString rightsText(const RightsRecord& rights);

} // namespace PlanService
