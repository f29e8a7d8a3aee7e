#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <unordered_map>

namespace ZorvicUnit {

/// Remembers which requests were carried out lately, so that one whose answer was lost can be sent again and takes
/// effect once. One thread at a time.
class RequestMemory {
public:
    /// Many times what all consoles can have sent within the minute for which they repeat a request.
    static constexpr std::size_t MaxKeys = 1'000;

    /// The revision that holds the effect; nothing for a request that is not known, and for the key 0.
    std::optional<std::uint64_t> Find(std::uint64_t key) const;
    /// Forgets the oldest one when there are too many.
    void Add(std::uint64_t key, std::uint64_t revision);

private:
    std::unordered_map<std::uint64_t, std::uint64_t> Revisions;
    std::deque<std::uint64_t> Keys;  ///< oldest first
};

}  // namespace ZorvicUnit
