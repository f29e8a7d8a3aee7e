#pragma once

#include "store/ledger.h"
#include "store/preset_row.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

namespace ZorvicUnit {

/// What can be read of a database, whatever befell it.
struct Salvage {
    std::map<std::int64_t, PresetRow> Presets;  ///< those that are whole
    std::set<std::int64_t> Unreadable;          ///< keys at which there is, or was, a preset
    std::optional<Ledger> Counted;
    std::int64_t LastKey = 0;  ///< that was ever given, as far as can be told
};

/// `lastKey`: the last one that others know of. Leaves the files as they are.
Salvage ReadWhatIsThere(const std::filesystem::path& database, std::int64_t lastKey = 0);

/// False for a file that is empty or not there.
bool HoldsSomething(const std::filesystem::path& file);

/// True when these presets are what the ledger counts, no more and no fewer.
bool Proves(const Ledger& ledger, const std::map<std::int64_t, PresetRow>& presets);

}  // namespace ZorvicUnit
