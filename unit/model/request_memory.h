#pragma once

#include "store/request_table.h"

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
    static constexpr std::size_t MaxKeys = RequestTable::MaxRequests;

    struct Outcome {
        std::uint64_t Revision = 0;  ///< that holds the effect
        std::int32_t PK = 0;         ///< of the preset that it made
    };

    /// Nothing for a request that is not known, and for the key 0.
    std::optional<Outcome> Find(std::uint64_t key) const;
    /// Forgets the oldest one when there are too many.
    void Add(std::uint64_t key, Outcome outcome);

private:
    std::unordered_map<std::uint64_t, Outcome> Outcomes;
    std::deque<std::uint64_t> Keys;  ///< oldest first
};

}  // namespace ZorvicUnit
