#pragma once

#include <cstdint>
#include <optional>

namespace ZorvicUnit {

class Connection;

/// What the database says must be in it; kept by its triggers, in the transaction of each change.
struct Ledger {
    std::int64_t Changes = 0;  ///< ever made
    std::int64_t Presets = 0;
    std::int64_t Marks = 0;   ///< sum over the presets, in whatever order
    std::int64_t Others = 0;  ///< rows of the hashed tables; 0 in a database that is older than these
    std::int64_t OtherMarks = 0;
    bool operator==(const Ledger&) const = default;
};

/// Nothing when the database is older than its ledger, or has lost it.
std::optional<Ledger> ReadLedger(Connection& database);

/// Looks at every page and record once, so that damage is said at the start and not in the middle of a show. Throws
/// StoreDamage.
void CheckContent(Connection& database);

}  // namespace ZorvicUnit
