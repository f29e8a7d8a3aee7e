#pragma once

#include <cstdint>
#include <functional>

namespace ZorvicRender {

/// Fills interleaved frames that begin at this output sample.
using Mix = std::function<void(std::int64_t first, int frames, float* out)>;

/// What the sink has seen since it was opened. The offset is how much later than its time sound comes out.
struct SinkFigures {
    std::uint64_t Underruns = 0;
    std::int32_t OffsetUS = 0;
};

/// Where the mix goes. For one thread.
class Sink {
public:
    virtual ~Sink() = default;
    /// Waits until more is wanted, some 20 ms at most, and plays it.
    virtual void Turn(const Mix& mix) = 0;
    virtual SinkFigures Figures() const = 0;
};

}  // namespace ZorvicRender
