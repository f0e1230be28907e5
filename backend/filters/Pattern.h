#pragma once

#include <QString>

#include <memory>
#include <string>

namespace re2 {
class RE2;
}

namespace PlanService {

constexpr int longestPattern = 16384;        ///< characters
constexpr int largestPatternProgram = 40000; ///< instructions

/// The pattern with its options in front, as "(?i)tower". Throws ApiError 400 for a pattern that is not one,
/// is longer or grows larger than the limits, or for an option beyond i, m and s.
QString checkedPattern(const QString& pattern, const QString& options);

/// A compiled pattern. Its search takes time in proportion to the text, whatever the pattern.
class Pattern
{
public:
    /// @param utf8 a checked pattern.
    explicit Pattern(const std::string& utf8);
    ~Pattern();
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    bool isValid() const;
    /// True when the pattern occurs anywhere in the text, which is UTF-8.
    bool occursIn(const char* text, int size) const;

    QString error() const;
    bool isTooLarge() const;

private:
    std::unique_ptr<re2::RE2> m_pattern;
};

} // namespace PlanService
