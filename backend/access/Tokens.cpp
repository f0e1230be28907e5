#include "Tokens.h"

#include <QDateTime>
#include <QStringList>

#include <sodium.h>

#include <algorithm>

namespace PlanService {

namespace {

constexpr int tokenBytes = 32;
constexpr int tokenLetters = (tokenBytes * 4 + 2) / 3; // base64 without its padding

void startSodium()
{
    // Safe to call again and from any thread.
    if (sodium_init() < 0) {
        throw Failure(QStringLiteral("the random number generator of libsodium does not start"));
    }
}

} // namespace

QByteArray newToken()
{
    startSodium();
    QByteArray bytes(tokenBytes, Qt::Uninitialized);
    randombytes_buf(bytes.data(), static_cast<std::size_t>(bytes.size()));
    return bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

bool looksLikeToken(const QByteArray& text)
{
    const auto isLetter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
               c == '_';
    };
    return text.size() == tokenLetters && std::all_of(text.begin(), text.end(), isLetter);
}

QByteArray tokenHash(const QByteArray& token)
{
    startSodium();
    // A token is 256 random bits: nobody tries them out, so a fast hash without salt is enough.
    QByteArray hash(crypto_generichash_BYTES, Qt::Uninitialized);
    crypto_generichash(reinterpret_cast<unsigned char*>(hash.data()), static_cast<std::size_t>(hash.size()),
                       reinterpret_cast<const unsigned char*>(token.constData()),
                       static_cast<unsigned long long>(token.size()), nullptr, 0);
    return hash;
}

std::optional<TokenRecord> findToken(Store& store, const QByteArray& token)
{
    // The index is asked for the first 64 bits. With them alone nobody finds a token that has them, let alone
    // the one that is in the store.
    constexpr int beginning = 8;
    const QByteArray hash = tokenHash(token);
    const QList<TokenRecord> candidates = store.tokensByHashBeginning(hash.left(beginning));
    std::optional<TokenRecord> found;
    for (const TokenRecord& candidate : candidates) {
        if (candidate.hash.size() == hash.size() &&
            sodium_memcmp(candidate.hash.constData(), hash.constData(),
                          static_cast<std::size_t>(hash.size())) == 0) {
            found = candidate;
        }
    }
    return found;
}

QString tokenTime(const QDateTime& time)
{
    return time.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ"));
}

void readRights(const QString& text, RightsRecord& rights)
{
    const QStringList words = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& word : words) {
        if (word == QLatin1String("read") || word == QLatin1String("read=all")) {
            rights.read = QStringLiteral("all");
        } else if (word == QLatin1String("read=own")) {
            rights.read = QStringLiteral("own");
        } else if (word == QLatin1String("create")) {
            rights.create = true;
        } else if (word == QLatin1String("edit")) {
            rights.edit = true;
        } else if (word == QLatin1String("delete")) {
            rights.remove = true;
        } else if (word == QLatin1String("export")) {
            rights.exportPlans = true;
        } else {
            throw Failure(QStringLiteral("'%1' is not a right; use a list of read=all, read=own, create, "
                                         "edit, delete, export")
                              .arg(word));
        }
    }
}

QString rightsText(const RightsRecord& rights)
{
    QStringList words;
    if (!rights.read.isEmpty()) {
        words += QStringLiteral("read=") + rights.read;
    }
    if (rights.create) {
        words += QStringLiteral("create");
    }
    if (rights.edit) {
        words += QStringLiteral("edit");
    }
    if (rights.remove) {
        words += QStringLiteral("delete");
    }
    if (rights.exportPlans) {
        words += QStringLiteral("export");
    }
    return words.join(QLatin1Char(','));
}

} // namespace PlanService
