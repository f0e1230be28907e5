#pragma once

#include "../store/Store.h"

#include <QDateTime>

namespace PlanService {

/// A new token's text: 32 random bytes, base64url. It is shown once and stored nowhere.
QByteArray newToken();

/// Whether a text could be a token at all: as long as one, and of its letters.
bool looksLikeToken(const QByteArray& text);

/// What the store keeps in a token's place: BLAKE2b of 32 bytes.
QByteArray tokenHash(const QByteArray& token);

/// The token that the store has under this text, revoked and expired ones too. How long it takes tells
/// nothing of the hashes in the store beyond their first bytes.
std::optional<TokenRecord> findToken(Store& store, const QByteArray& token);

/// A token's times as the store keeps them, in UTC. Two of them compare as the instants do.
QString tokenTime(const QDateTime& time);

/// Reads "read=all,create,edit,delete,export" (any part may be missing; "read" alone means "read=all") into
/// the record. Throws Failure naming the word that is no right.
void readRights(const QString& text, RightsRecord& rights);

/// The same form, for people.
QString rightsText(const RightsRecord& rights);

} // namespace PlanService
