#pragma once

#include <zorvic/types.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Zorvic::Internal {

/// What a preset is called on every unit: its name, and how many of that name come before it.
using PresetName = std::pair<std::string, int>;

/// By key. The presets must outlive it.
using PresetNames = std::map<std::int32_t, std::pair<PresetName, const Preset*>>;
PresetNames NamedPresets(const std::vector<Preset>& presets);

/// A preset in an operator's words, without its key and name. Different contents give different texts.
struct PresetFields {
    std::vector<std::string> Names;            // in the order in which they are shown
    std::map<std::string, std::string> Texts;  // by name

    void Add(const std::string& name, std::string text);
};
/// `names` are those of the list that the preset stands in: links go by them, and one that leads nowhere is none.
PresetFields FieldsOf(const Preset& preset, const PresetNames& names);

}  // namespace Zorvic::Internal
