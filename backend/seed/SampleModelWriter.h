#pragma once

#include "SampleModel.h"

#include <memory>

namespace PlanService {

/// A box along the axes, in centimetres, so that every number is exact.
struct SampleBox
{
    int x, y, z; ///< the lowest corner
    int dx, dy, dz;
};

/// Writes boxes in one file format.
class SampleModelWriter
{
public:
    virtual ~SampleModelWriter() = default;
    virtual void add(const QString& name, const QString& storey, const SampleBox& box) = 0;
    /// After the last box.
    virtual void finish() = 0;
};

/// @param write has to outlive the writer
std::unique_ptr<SampleModelWriter> sampleModelWriter(SampleModelFormat format,
                                                     const std::function<void(const QByteArray&)>& write);

} // namespace PlanService
