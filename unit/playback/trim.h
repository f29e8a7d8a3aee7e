#pragma once

#include <chrono>

namespace ZorvicUnit {

/// The part of a preset that plays, as elapsed time from the start of its assets. The wire counts the other way
/// (remaining time); elapsed time stays true when the running time changes under a playing preset.
struct Trim {
    std::chrono::nanoseconds Start{0};
    std::chrono::nanoseconds End{0};
    std::chrono::nanoseconds Length() const { return End - Start; }
};

/// Where a pass of a preset is.
struct PassPosition {
    Trim Window;
    std::chrono::nanoseconds Elapsed{0};  ///< from the start of the assets
    bool First = false;                   ///< fades in
    bool Last = false;                    ///< fades out
};

}  // namespace ZorvicUnit
