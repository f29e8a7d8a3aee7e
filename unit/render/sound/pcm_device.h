#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace ZorvicRender {

/// A sound device that plays interleaved stereo of 48 kHz. For one thread.
class PcmDevice {
public:
    enum class State {
        Fine,
        Broken,  ///< it ran dry and begins anew with what is written next
        Gone,
    };

    virtual ~PcmDevice() = default;
    /// Throws Fault when the device cannot be opened.
    virtual void Open() = 0;
    virtual void Close() = 0;
    /// Waits until a block has room, or so long. `room` tells which.
    virtual State WaitForRoom(std::chrono::milliseconds limit, bool& room) = 0;
    /// When the next frame that is written will sound: frames from now.
    virtual State Delay(long& frames) = 0;
    virtual State Write(const float* frames, std::size_t count) = 0;

    virtual std::string Name() const = 0;
};

}  // namespace ZorvicRender
