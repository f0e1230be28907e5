#pragma once

#include "Reply.h"

#include <string>

namespace PlanService {

/// What is still to be said on a connection that is about to be closed.
struct Rejection
{
    int status = 0;
    QByteArray text; ///< the whole reply
};

/// The reply to a request that was not read to its end.
Rejection rejectionOf(const ApiError& error);

/// That of a request for which there is no room.
Rejection crowdedOut();

ApiError malformedRequest();

/// What the parser means, from the name of its error.
ApiError refusalOf(const std::string& parserError);

QByteArray reasonPhrase(int status);

} // namespace PlanService
