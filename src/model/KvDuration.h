#pragma once

/// A duration or lag with its unit. The library carries both unchanged and never converts between units.
struct KvDuration
{
    double value = 0.0; ///< amount of time in `units`; negative for a lead
    int units = 2;      ///< time-unit code of the exchange format; 2 = days
};
