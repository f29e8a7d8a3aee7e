#include <zorvic/compare.h>

#include "preset_fields.h"

#include <map>

namespace Zorvic {
namespace {

using Internal::NamedPresets;
using Internal::PresetFields;

std::vector<FieldDifference> CompareFields(const PresetFields& first, const PresetFields& second) {
    std::vector<FieldDifference> differences;
    const auto textIn = [](const PresetFields& fields, const std::string& name) {
        const auto found = fields.Texts.find(name);
        return found == fields.Texts.end() ? std::string() : found->second;
    };
    for (const auto& name : first.Names)
        if (textIn(second, name) != first.Texts.at(name))
            differences.push_back({name, first.Texts.at(name), textIn(second, name)});
    for (const auto& name : second.Names)
        if (!first.Texts.contains(name)) differences.push_back({name, {}, second.Texts.at(name)});
    return differences;
}

bool SameContent(const Asset& first, const Asset& second) {
    if (first.TotalSize != second.TotalSize) return false;
    return first.Checksum.empty() || second.Checksum.empty() || first.Checksum == second.Checksum;
}

}  // namespace

std::vector<PresetPair> PairPresets(const std::vector<Preset>& first, const std::vector<Preset>& second) {
    const auto firstNames = NamedPresets(first);
    const auto secondNames = NamedPresets(second);
    std::map<Internal::PresetName, const Preset*> others;
    for (const auto& [pk, named] : secondNames)
        others[named.first] = named.second;
    std::vector<PresetPair> pairs;
    for (const Preset& preset : first) {
        const auto found = others.find(firstNames.at(preset.PK).first);
        pairs.emplace_back(&preset, found == others.end() ? nullptr : found->second);
        if (found != others.end()) others.erase(found);
    }
    for (const Preset& preset : second)
        if (others.contains(secondNames.at(preset.PK).first)) pairs.emplace_back(nullptr, &preset);
    return pairs;
}

std::vector<PresetDifference> ComparePresets(const std::vector<Preset>& first, const std::vector<Preset>& second) {
    const auto firstNames = NamedPresets(first);
    const auto secondNames = NamedPresets(second);
    std::vector<PresetDifference> differences;
    for (const auto& [one, other] : PairPresets(first, second)) {
        PresetDifference difference{(one ? one : other)->Name, one ? one->PK : 0, other ? other->PK : 0, {}};
        if (one && other)
            difference.Fields =
                CompareFields(Internal::FieldsOf(*one, firstNames), Internal::FieldsOf(*other, secondNames));
        if (!one || !other || !difference.Fields.empty()) differences.push_back(std::move(difference));
    }
    return differences;
}

std::vector<MediaDifference> CompareMedia(const std::vector<Asset>& first, const std::vector<Asset>& second) {
    std::map<std::string, std::pair<const Asset*, const Asset*>> byPath;
    for (const Asset& asset : first)
        byPath[asset.FullPath].first = &asset;
    for (const Asset& asset : second)
        byPath[asset.FullPath].second = &asset;
    std::vector<MediaDifference> differences;
    for (const auto& [path, assets] : byPath) {
        const auto& [one, other] = assets;
        if (!one || !other || !SameContent(*one, *other))
            differences.push_back({path, one != nullptr, other != nullptr});
    }
    return differences;
}

}  // namespace Zorvic
