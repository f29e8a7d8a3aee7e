#include "plan_text.h"

#include "unit.h"
#include "words.h"

#include <algorithm>
#include <iterator>

namespace ZorvicCtl {
namespace {

using Steps = std::vector<RestorePlan::Step>;

std::string FieldNames(const RestorePlan::Step& step) {
    std::string names;
    for (const auto& field : step.Fields)
        names += (names.empty() ? "" : ", ") + field.Field;
    return names;
}

void PrintSteps(const char* what, const Steps& steps) {
    for (const auto& step : steps)
        PrintLine(what + Title(step.Wanted.Known) + (step.Fields.empty() ? "" : ": " + FieldNames(step)));
}

Json ToJson(const Steps& steps) {
    Json json = Json::array();
    for (const auto& step : steps) {
        Json fields = Json::array();
        for (const auto& field : step.Fields)
            fields.push_back(field.Field);
        json.push_back({{"name", step.Wanted.Known.Name}, {"pk", step.PK}, {"fields", fields}});
    }
    return json;
}

Json Paths(const std::vector<Zorvic::Asset>& media) {
    Json json = Json::array();
    std::transform(media.begin(), media.end(), std::back_inserter(json),
                   [](const auto& asset) { return asset.FullPath; });
    return json;
}

std::string SettingsText(const Zorvic::KonaHardwareState& settings) {
    std::string text;
    for (const auto mode : settings.Resolutions)
        text += ResolutionText(mode) + ' ';
    return text + "at " + RefreshText(settings.RefreshRate);
}

}  // namespace

void PrintPlan(const RestorePlan& plan, const Backup& wanted, const Backup& unit) {
    PrintSteps("Create    ", plan.Create);
    PrintSteps("Change    ", plan.Change);
    PrintSteps("Playing   ", plan.Playing);
    if (plan.Same > 0) PrintLine("Same      " + std::to_string(plan.Same) + " presets");
    for (const auto& name : plan.OnlyOnUnit)
        PrintLine("Leave     \"" + name + "\", which is only on the unit");
    for (const auto& asset : plan.MissingMedia)
        PrintLine("Missing   " + asset.FullPath + ", " + SizeText(asset.TotalSize));
    for (const auto& asset : plan.OtherMedia)
        PrintLine("Other     " + asset.FullPath + " has another content on the unit");
    if (SettingsText(wanted.Settings) != SettingsText(unit.Settings))
        PrintLine("Settings  were " + SettingsText(wanted.Settings) + " and are " + SettingsText(unit.Settings) +
                  "; they are set where the unit is started");
    if (plan.LeavesOutUnknown)
        PrintLine("Left out  what only a newer unit knows: this one has version " + unit.Unit.APIVersion +
                  ", the backup is of " + wanted.Unit.APIVersion);
}

Json ToJson(const RestorePlan& plan, bool applied) {
    return {{"applied", applied},
            {"create", ToJson(plan.Create)},
            {"change", ToJson(plan.Change)},
            {"playing", ToJson(plan.Playing)},
            {"same", plan.Same},
            {"only_on_unit", plan.OnlyOnUnit},
            {"missing_media", Paths(plan.MissingMedia)},
            {"other_media", Paths(plan.OtherMedia)}};
}

}  // namespace ZorvicCtl
