#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "zorvic/types.h"

// What two units hold, side by side. No network, no units: records in, differences out.

namespace Zorvic {

/// A preset of each side. Null on the side that has none.
using PresetPair = std::pair<const Preset*, const Preset*>;
/// Presets are the same by name; of several of one name the first is the same as the first, and so on. In the order
/// of the first list, then that of what only the second one has.
std::vector<PresetPair> PairPresets(const std::vector<Preset>& first, const std::vector<Preset>& second);

/// One field in the words of an operator, and what it holds on each side; empty where a side does not have it.
struct FieldDifference {
    std::string Field;
    std::string First;
    std::string Second;
};

/// A preset that is not the same on both sides, or only on one.
struct PresetDifference {
    std::string Name;
    std::int32_t FirstPK = 0;             ///< 0: only the second list has it
    std::int32_t SecondPK = 0;            ///< 0: only the first list has it
    std::vector<FieldDifference> Fields;  ///< when both have it; never empty then
};

/// The presets that differ. Keys are no difference, each unit makes its own, and a link is to a name.
std::vector<PresetDifference> ComparePresets(const std::vector<Preset>& first, const std::vector<Preset>& second);

/// A file that is not the same on both sides, or only on one.
struct MediaDifference {
    std::string Path;
    bool InFirst = false;
    bool InSecond = false;  ///< true in both: the content differs
};

/// The media that differ, by path. What one side has not checked yet is taken for the same when its size is.
std::vector<MediaDifference> CompareMedia(const std::vector<Asset>& first, const std::vector<Asset>& second);

}  // namespace Zorvic
