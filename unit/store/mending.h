#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace ZorvicUnit {

/// What is known of a damaged database from outside.
struct DamagedDatabase {
    std::filesystem::path File;
    std::filesystem::path Evidence;            ///< the file that says that it was used
    std::optional<std::int64_t> Acknowledged;  ///< changes, as the seal says
    std::string Damage;
};

/// Makes a database in the place of a damaged one from what can be read of it and from its newest whole copy, and sets
/// the damaged files aside. Logs what that has cost: each preset that is lost, or older than it was. Throws Fault, with
/// the files as they were, when acknowledged changes would be missing without anything to name them by.
void Mend(const DamagedDatabase& damaged);

/// Carries a mending to its end that was cut off when all was ready. Before the database is opened.
void FinishMending(const std::filesystem::path& file);

}  // namespace ZorvicUnit
