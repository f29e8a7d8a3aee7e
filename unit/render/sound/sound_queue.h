#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZorvicRender {

/// An unbroken stretch of decoded sound, at most a second. Positions count frames from the start of the media.
class SoundQueue {
public:
    static constexpr std::size_t Capacity = 48'000;

    /// Empties it; the next frame kept is the one at this position.
    void Restart(std::int64_t position);
    /// Keeps what follows on without a break, as far as there is room. Returns the frames dealt with, dropped ones too.
    std::size_t Append(std::int64_t position, const float* frames, std::size_t count);
    void DropBefore(std::int64_t position);
    /// Returns how many frames from this position there are.
    std::size_t Copy(std::int64_t position, std::size_t count, float* out) const;

    std::int64_t Begin() const { return First; }
    std::int64_t End() const { return First + static_cast<std::int64_t>(Size); }
    std::size_t Room() const { return Capacity - Size; }

private:
    std::size_t Slot(std::int64_t position) const;

    std::vector<float> Ring;  ///< made at the first frame: a file without sound needs none
    std::int64_t First = 0;
    std::size_t Size = 0;
};

}  // namespace ZorvicRender
