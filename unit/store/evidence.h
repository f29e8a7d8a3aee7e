#pragma once

#include "store/seal.h"

#include <filesystem>
#include <optional>

namespace ZorvicUnit {

/// The file that shows that a store has been used, whatever became of its database; nothing beside a new one. Media are
/// none: they may have been put there for a store to come.
std::optional<std::filesystem::path> EvidenceOfUse(const std::filesystem::path& database, const Seal& seal);

}  // namespace ZorvicUnit
