#include "Pattern.h"

#include "../http/Reply.h"
#include "../records/FieldReader.h"

#include <re2/re2.h>

namespace PlanService {

namespace {

ApiError refusal(const char* code, const QString& message)
{
    return {400, QLatin1String(code), message, QStringLiteral("$regex")};
}

} // namespace

Pattern::Pattern(const std::string& utf8)
{
    re2::RE2::Options options;
    options.set_log_errors(false);
    options.set_max_mem(8 << 20);
    m_pattern = std::make_unique<re2::RE2>(utf8, options);
}

Pattern::~Pattern() = default;

bool Pattern::isValid() const
{
    return m_pattern->ok();
}

bool Pattern::occursIn(const char* text, int size) const
{
    return re2::RE2::PartialMatch(re2::StringPiece(text, static_cast<std::size_t>(size)), *m_pattern);
}

QString Pattern::error() const
{
    return QString::fromStdString(m_pattern->error());
}

bool Pattern::isTooLarge() const
{
    return m_pattern->error_code() == re2::RE2::ErrorPatternTooLarge ||
           (isValid() && m_pattern->ProgramSize() > largestPatternProgram);
}

QString checkedPattern(const QString& pattern, const QString& options)
{
    for (const QChar option : options) {
        if (!QLatin1String("ims").contains(option)) {
            throw ApiError(400, QStringLiteral("badPattern"),
                           QStringLiteral("'$options' knows the letters i, m and s, not '%1'").arg(option),
                           QStringLiteral("$options"));
        }
    }
    if (pattern.size() > longestPattern) {
        throw refusal("patternTooLarge",
                      QStringLiteral("the pattern has %1 characters, at most %2 are accepted")
                          .arg(pattern.size())
                          .arg(longestPattern));
    }
    const QString whole = options.isEmpty() ? pattern : QStringLiteral("(?%1)").arg(options) + pattern;
    const Pattern compiled(whole.toStdString());
    if (compiled.isTooLarge()) {
        throw refusal("patternTooLarge",
                      QStringLiteral("the pattern '%1' grows to more than %2 instructions; repeat less in it")
                          .arg(shortened(pattern))
                          .arg(largestPatternProgram));
    }
    if (!compiled.isValid()) {
        throw refusal("badPattern", QStringLiteral("'%1' is no pattern that is known here: %2")
                                        .arg(shortened(pattern), shortened(compiled.error())));
    }
    return whole;
}

} // namespace PlanService
