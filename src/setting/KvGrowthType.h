#pragma once

namespace Kv {

/// How an element grows into view during the simulation. The numbers are stored by hosts and stay as they
/// are; those between them stand for nothing.
enum QGrowthType : int
{
    GrowFrontToBack = 0,
    GrowBackToFront = 2,
    GrowLeftToRight = 4,
    GrowRightToLeft = 6,
    GrowTopToBottom = 8,
    GrowBottomToTop = 10, ///< the default
    GrowAppear = 12,
    GrowDisappear = 13,
};

} // namespace Kv
