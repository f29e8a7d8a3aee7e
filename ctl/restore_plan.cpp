#include "restore_plan.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace ZorvicCtl {
namespace {

using Zorvic::Preset;
using Zorvic::PresetRecord;

using Records = std::map<std::int32_t, const PresetRecord*>;
using Keys = std::map<std::int32_t, std::int32_t>;
/// By the number in the backup.
using Differences = std::map<std::int32_t, std::vector<Zorvic::FieldDifference>>;

Records ByKey(const Backup& backup) {
    Records records;
    for (const auto& record : backup.Presets)
        records[record.Known.PK] = &record;
    return records;
}

/// Major and minor number; the first units named none.
std::pair<int, int> VersionOf(const std::string& text) {
    std::pair<int, int> version{1, 0};
    static_cast<void>(std::sscanf(text.c_str(), "%d.%d", &version.first, &version.second));
    return version;
}

/// What a preset has beside its own unknown fields, which only its creation can set.
std::map<std::string, std::string> UnknownOfParts(const PresetRecord& record) {
    auto unknown = record.Unknown;
    unknown.erase("");
    return unknown;
}

void AddUnknown(const Backup& wanted, const Records& unit, const Keys& keys, Differences& differences) {
    for (const auto& record : wanted.Presets) {
        const auto key = keys.find(record.Known.PK);
        if (key != keys.end() && UnknownOfParts(record) != UnknownOfParts(*unit.at(key->second)))
            differences[record.Known.PK].push_back({"Fields of a newer program", {}, {}});
    }
}

void AddStep(const PresetRecord& record, const std::vector<Zorvic::FieldDifference>& fields,
             const std::set<std::int32_t>& playing, RestorePlan& plan) {
    RestorePlan::Step step{record, 0, fields};
    if (plan.LeavesOutUnknown) step.Wanted.Unknown.clear();
    const auto key = plan.KeyOf.find(record.Known.PK);
    step.PK = key == plan.KeyOf.end() ? 0 : key->second;
    if (key == plan.KeyOf.end()) {
        plan.Create.push_back(std::move(step));
    } else if (fields.empty()) {
        ++plan.Same;
    } else {
        (playing.contains(key->second) ? plan.Playing : plan.Change).push_back(std::move(step));
    }
}

void PlanMedia(const Backup& wanted, const Backup& unit, RestorePlan& plan) {
    std::set<std::string> used;
    for (const auto& record : wanted.Presets)
        for (const auto& canvas : record.Known.Canvases)
            for (const auto& asset : canvas.Assets)
                used.insert(asset.FullPath);
    std::set<std::string> there;
    for (const auto& asset : unit.Media)
        there.insert(asset.FullPath);
    std::map<std::string, Zorvic::Asset> known;
    for (const auto& asset : wanted.Media)
        known[asset.FullPath] = asset;
    for (const auto& path : used) {
        known[path].FullPath = path;
        if (!there.contains(path)) plan.MissingMedia.push_back(known[path]);
    }
    for (const auto& difference : Zorvic::CompareMedia(wanted.Media, unit.Media))
        if (difference.InFirst && difference.InSecond && used.contains(difference.Path))
            plan.OtherMedia.push_back(known[difference.Path]);
}

}  // namespace

RestorePlan PlanRestore(const Backup& wanted, const Backup& unit, const std::set<std::int32_t>& playing) {
    RestorePlan plan;
    const auto wantedPresets = wanted.PlainPresets();
    const auto unitPresets = unit.PlainPresets();
    for (const auto& [first, second] : Zorvic::PairPresets(wantedPresets, unitPresets)) {
        if (first && second) plan.KeyOf[first->PK] = second->PK;
        if (!first) plan.OnlyOnUnit.push_back(second->Name);
    }
    Differences differences;
    for (auto& difference : Zorvic::ComparePresets(wantedPresets, unitPresets))
        differences[difference.FirstPK] = std::move(difference.Fields);
    if (VersionOf(unit.Unit.APIVersion) >= VersionOf(wanted.Unit.APIVersion)) {
        AddUnknown(wanted, ByKey(unit), plan.KeyOf, differences);
    } else {
        plan.LeavesOutUnknown = std::ranges::any_of(wanted.Presets, [](const auto& r) { return !r.Unknown.empty(); });
    }
    for (const auto& record : wanted.Presets)
        AddStep(record, differences[record.Known.PK], playing, plan);
    PlanMedia(wanted, unit, plan);
    return plan;
}

}  // namespace ZorvicCtl
