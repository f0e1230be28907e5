#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

/// Problems of one kind: the first few as lines, the others as a number. They join the rest when the object
/// goes.
class ProblemKind
{
public:
    explicit ProblemKind(QStringList& problems)
        : m_problems(problems)
    {
    }

    ~ProblemKind()
    {
        m_problems += m_first;
        if (m_count > shown)
            m_problems.append(QCoreApplication::translate("ProblemKind", "… and %1 more of this kind")
                                  .arg(m_count - shown));
    }

    ProblemKind(const ProblemKind&) = delete;
    ProblemKind& operator=(const ProblemKind&) = delete;

    /// @p describe gives the line; it is asked for those that are shown only.
    template<class Describe>
    void add(Describe describe)
    {
        if (m_count++ < shown)
            m_first.append(describe());
    }

private:
    static constexpr int shown = 5;

    QStringList& m_problems;
    QStringList m_first;
    int m_count = 0;
};
