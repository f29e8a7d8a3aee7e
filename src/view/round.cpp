#include "view/round.h"

#include <algorithm>
#include <utility>

namespace {

/// Of two records with one key the first counts.
template <typename Record>
std::unordered_map<int, const Record*> IndexByPK(const std::vector<Record>& records) {
    std::unordered_map<int, const Record*> index;
    index.reserve(records.size());
    for (const auto& record : records)
        index.emplace(record.PK, &record);
    return index;
}

}  // namespace

Round::Round(std::string guid, std::shared_ptr<Lists> spare, std::vector<int> selection)
    : GUID(std::move(guid)),
      Handle(FindSession(GUID)),
      Link(Handle ? Handle->GetSession() : nullptr),
      Selection(std::move(selection)),
      Spare(std::move(spare)),
      Held(std::exchange(*Spare, {})) {}

Round::Round(Zorvic::Session* session, std::shared_ptr<Lists> spare, std::vector<int> selection)
    : Link(session), Selection(std::move(selection)), Spare(std::move(spare)), Held(std::exchange(*Spare, {})) {}

Round::~Round() {
    *Spare = std::move(Held);
}

bool Round::Renew() {
    auto handle = FindSession(GUID);
    auto* const session = handle ? handle->GetSession() : nullptr;
    if (session != Link) {
        HasPresets.reset();
        HasStates.reset();
        PresetsByPK.clear();
        StatesByPK.clear();
    }
    Handle = std::move(handle);
    Link = session;
    return Link != nullptr;
}

const std::vector<Zorvic::Preset>* Round::Presets() {
    if (!HasPresets) HasPresets = Link && Link->GetPresets(Held.Presets) == Zorvic::ZORVIC_STATUS_OK;
    return *HasPresets ? &Held.Presets : nullptr;
}

const Zorvic::Preset* Round::FindPreset(int pk) {
    if (!Presets()) return nullptr;
    if (PresetsByPK.empty()) PresetsByPK = IndexByPK(Held.Presets);
    const auto found = PresetsByPK.find(pk);
    return found == PresetsByPK.end() ? nullptr : found->second;
}

const std::vector<Zorvic::PresetState>* Round::States() {
    if (!HasStates) HasStates = Link && Link->GetPresetStates(Held.States) == Zorvic::ZORVIC_STATUS_OK;
    return *HasStates ? &Held.States : nullptr;
}

const Zorvic::PresetState* Round::FindState(int pk) {
    if (!States()) return nullptr;
    if (StatesByPK.empty()) StatesByPK = IndexByPK(Held.States);
    const auto found = StatesByPK.find(pk);
    return found == StatesByPK.end() ? nullptr : found->second;
}

std::optional<Zorvic::TimeCode> Round::FindTimeCode(int pk) const {
    Zorvic::TimeCode timeCode;
    if (!Link || Link->GetTimeCode(timeCode, pk) != Zorvic::ZORVIC_STATUS_OK) return std::nullopt;
    return timeCode;
}

const Zorvic::Preset* Round::Current() {
    return Selection.empty() ? nullptr : FindPreset(Selection.front());
}

const Zorvic::PresetState* Round::CurrentState() {
    return Selection.empty() ? nullptr : FindState(Selection.front());
}

std::vector<int> Round::SelectedKeys() {
    std::vector<int> keys;
    for (const int key : Selection)
        if (FindState(key)) keys.push_back(key);
    std::sort(keys.begin(), keys.end());
    return keys;
}

Zorvic::StatusCode Round::EditCurrent(const std::function<bool(Zorvic::Preset&)>& edit) {
    const auto* const current = Current();
    if (!current) return Zorvic::ZORVIC_STATUS_OK;
    auto preset = *current;
    return edit(preset) ? Link->UpdatePreset(preset) : Zorvic::ZORVIC_STATUS_OK;
}
