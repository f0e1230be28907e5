#pragma once

#include <KvNetwork/KvNetworkReport.h>

#include <QtCore/QString>

/// Why something was not done, for a person.
struct PlanFailure
{
    QString text;    ///< what was not done, why, and what to try; in the user's language
    QString details; ///< what network and service said, in their own words, and which service it is
};

/// Whether a write may have been made all the same, because no answer came that told.
bool isOutcomeUnknown(const KvNetworkReport& report);

/// @param task what was to be done, in the user's language.
/// @param report what became of the request; null when none was sent.
PlanFailure planFailure(const QString& task, bool isWrite, const KvNetworkReport* report);
