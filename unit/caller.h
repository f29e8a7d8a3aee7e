#pragma once

#include <cstdint>
#include <functional>

namespace ZorvicUnit {

/// What a command knows of the call that brought it.
struct Caller {
    /// False when nobody waits for the answer any more. Such a command is not carried out: its caller has been told
    /// that it failed, and may have tried again.
    std::function<bool()> Waits = [] { return true; };
    /// The same for every repetition of one request; 0 for a request that does no harm twice.
    std::uint64_t RequestKey = 0;
};

}  // namespace ZorvicUnit
