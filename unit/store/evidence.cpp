#include "store/evidence.h"

#include "store/copies.h"
#include "store/salvage.h"

namespace ZorvicUnit {

std::optional<std::filesystem::path> EvidenceOfUse(const std::filesystem::path& database, const Seal& seal) {
    if (seal.Exists()) return seal.File();
    const auto copies = Copies(database).Files();
    if (!copies.empty()) return copies.front();
    // A unit makes its database first.
    const auto cache = database.parent_path() / "cache.db";
    if (HoldsSomething(cache)) return cache;
    const std::filesystem::path log = database.string() + "-wal";
    if (HoldsSomething(log)) return log;
    return std::nullopt;
}

}  // namespace ZorvicUnit
