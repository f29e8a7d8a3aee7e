#include "model/unit_model.h"

#include "fault.h"
#include "feed/pieces.h"
#include "store/database.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace ZorvicUnit {

using zorvic::v1::MarkRequest;
using zorvic::v1::Preset;

UnitModel::UnitModel(const Profile& profile, Database& database, const Clock& clock, const AssetCatalog& catalog,
                     Feed& feed, Recorder& record)
    : MostBytes(profile.MostBytes),
      Rows(database),
      Table(database),
      Requests(database),
      Settings(database),
      Playing(clock, catalog),
      Updates(feed),
      Record(record) {
    SavedSelection = Settings.SelectedPreset();
    Selected = TriedSelection = SavedSelection;
    auto identity = profile.Identity;
    identity.set_run(feed.Run());
    Updates.Publish({IdentityChange(identity), HardwareChange(profile.Hardware)});
    Reload();
}

// The command tells in `made` which preset it makes.
template <typename Command>
std::uint64_t UnitModel::Write(const Caller& caller, const Command& command, std::int32_t* made) {
    const auto turn = Rows.WaitForTurn(caller.Waits);
    if (const auto done = Recent.Find(caller.RequestKey)) {
        if (made) *made = done->PK;
        return done->Revision;
    }
    const std::uint64_t revision = command();
    Recent.Add(caller.RequestKey, {revision, made ? *made : 0});
    return revision;
}

std::uint64_t UnitModel::CreatePreset(const Preset& sent, const Caller& caller, std::int32_t* made) {
    const auto create = [&] {
        Preset preset = sent;
        preset.clear_pk();
        {
            const std::scoped_lock lock(ModelLock);
            if (Presets.size() >= MaxPresets)
                throw Fault(FaultKind::Misused, "there are as many presets as there may be");
            Normalise(preset, NextTabIndex());
        }
        CheckPreset(preset);
        ReserveRoom(preset, 0);
        preset.set_pk(Table.Insert(preset, caller.RequestKey));
        if (made) *made = preset.pk();
        Record.Edited(preset, "created", caller.Who);
        return ShowPreset(preset);
    };
    return Write(caller, create, made);
}

std::uint64_t UnitModel::UpdatePreset(const Preset& sent, const google::protobuf::FieldMask& fields,
                                      const Caller& caller) {
    return Write(caller, [&] {
        const PresetPtr stored = Find(sent.pk());
        Preset edited = *stored;
        MergeFields(edited, sent, fields);
        return Store(std::move(edited), *stored, caller);
    });
}

std::uint64_t UnitModel::DeletePreset(std::int32_t pk, const Caller& caller) {
    return Write(caller, [&] {
        {
            const std::scoped_lock lock(ModelLock);
            Playing.SetRetired(pk, true);
        }
        try {
            Table.Remove(pk);
        } catch (const Fault&) {
            const std::scoped_lock lock(ModelLock);
            Playing.SetRetired(pk, false);
            throw;
        }
        const std::scoped_lock lock(ModelLock);
        Playing.Remove(pk);
        Record.Deleted(*Presets.at(pk), caller.Who);
        Forget(pk);
        if (Selected == pk) Selected = 0;
        return Publish({PresetGone(pk)});
    });
}

std::uint64_t UnitModel::SelectPreset(std::int32_t pk, const Caller& caller) {
    const std::scoped_lock lock(ModelLock);
    caller.CheckWaits();
    if (!Presets.contains(pk)) throw Fault(FaultKind::NotFound, "no such preset");
    Selected = pk;
    SelectionMade.notify_all();
    return Publish({});
}

template <typename Edit>
std::uint64_t UnitModel::EditMarks(const MarkRequest& request, const Caller& caller, const Edit& edit) {
    return Write(caller, [&] {
        const PresetPtr stored = Find(request.pk());
        Preset edited = *stored;
        Marks& marks = MarksOf(edited, request.kind());
        edit(marks, FindMark(marks, request.time_ms()));
        return Store(std::move(edited), *stored, caller);
    });
}

std::uint64_t UnitModel::CreateMark(const MarkRequest& request, const Caller& caller) {
    return EditMarks(request, caller, [&](Marks& marks, Marks::iterator existing) {
        if (existing != marks.end()) throw Fault(FaultKind::Refused, "there is a mark at this time");
        const std::int32_t id = NextMarkId(marks);
        auto* mark = marks.Add();
        mark->set_id(id);
        mark->set_time_ms(request.time_ms());
        mark->set_name(request.name());
    });
}

std::uint64_t UnitModel::RenameMark(const MarkRequest& request, const Caller& caller) {
    return EditMarks(request, caller, [&](Marks& marks, Marks::iterator existing) {
        if (existing == marks.end()) throw Fault(FaultKind::NotFound, "no mark at this time");
        existing->set_name(request.name());
    });
}

std::uint64_t UnitModel::DeleteMark(const MarkRequest& request, const Caller& caller) {
    return EditMarks(request, caller, [](Marks& marks, Marks::iterator existing) {
        if (existing == marks.end()) throw Fault(FaultKind::NotFound, "no mark at this time");
        marks.erase(existing);
    });
}

void UnitModel::SaveSelection() {
    const auto turn = Rows.WaitForTurn(Caller().Waits);
    std::int32_t selected = 0;
    {
        const std::scoped_lock lock(ModelLock);
        selected = TriedSelection = Selected;
    }
    if (selected == SavedSelection) return;
    Settings.SetSelectedPreset(selected);
    SavedSelection = selected;
}

bool UnitModel::WaitForSelection(const std::stop_token& stop, std::chrono::steady_clock::time_point until) {
    std::unique_lock lock(ModelLock);
    const auto isNew = [this] { return Selected != TriedSelection; };
    return SelectionMade.wait_for(lock, stop, until - std::chrono::steady_clock::now(), isNew);
}

void UnitModel::Reload() {
    const auto turn = Rows.WaitForTurn(Caller().Waits);
    const std::vector<Preset> stored = Table.Load();
    const std::vector<RequestTable::Request> requests = Requests.Load();
    const std::scoped_lock lock(ModelLock);
    std::vector<FeedChange> changes;
    const auto before = std::exchange(Presets, {});
    Playing.Clear();
    Places.clear();
    StoredBytes = 0;
    for (const Preset& preset : stored) {
        Keep(std::make_shared<const Preset>(preset));
        changes.push_back(PresetChanged(preset));
    }
    for (const auto& [pk, preset] : before)
        if (!Presets.contains(pk)) changes.push_back(PresetGone(pk));
    if (!Presets.contains(Selected)) Selected = 0;
    // Revisions of another run say nothing in this one; what these made is part of the state from now on.
    const std::uint64_t revision = Publish(std::move(changes));
    Recent = {};
    for (const auto& request : requests)
        Recent.Add(request.Key, {revision, request.PK});
}

PresetPtr UnitModel::Find(std::int32_t pk) {
    const std::scoped_lock lock(ModelLock);
    const auto found = Presets.find(pk);
    if (found == Presets.end()) throw Fault(FaultKind::NotFound, "no such preset");
    return found->second;
}

// Called with both locks held, as the next one.
void UnitModel::Keep(PresetPtr preset) {
    Forget(preset->pk());
    StoredBytes += BytesOf(*preset);
    Places.emplace(FirstTab(*preset)->index(), preset->pk());
    Presets[preset->pk()] = preset;
    Playing.Put(std::move(preset));
}

void UnitModel::Forget(std::int32_t pk) {
    const auto known = Presets.find(pk);
    if (known == Presets.end()) return;
    StoredBytes -= BytesOf(*known->second);
    Places.erase({FirstTab(*known->second)->index(), pk});
    Presets.erase(known);
}

std::int32_t UnitModel::NextTabIndex() const {
    const std::int64_t last = Places.empty() ? -1 : std::max(-1, Places.rbegin()->first);
    return static_cast<std::int32_t>(std::min<std::int64_t>(last + 1, std::numeric_limits<std::int32_t>::max()));
}

// Called with the database's lock held; stored is the preset as it is.
std::uint64_t UnitModel::Store(Preset edited, const Preset& stored, const Caller& caller) {
    Normalise(edited, FirstTab(stored)->index());
    CheckPreset(edited);
    if (edited.SerializeAsString() == stored.SerializeAsString()) return Updates.Revision();
    ReserveRoom(edited, BytesOf(stored));
    Table.Replace(edited, caller.RequestKey);
    Record.Edited(edited, DifferingFields(stored, edited), caller.Who);
    return ShowPreset(edited);
}

// One that shrinks is stored also where too much is there already.
void UnitModel::ReserveRoom(const Preset& preset, std::size_t before) {
    const std::size_t after = BytesOf(preset);
    if (after > before && StoredBytes + after - before > MostBytes)
        throw Fault(FaultKind::Misused, fmt::format("all presets together would be larger than {} bytes", MostBytes));
}

std::uint64_t UnitModel::ShowPreset(const Preset& preset) {
    auto shared = std::make_shared<const Preset>(preset);
    FeedChange change = PresetChanged(preset);
    const std::scoped_lock lock(ModelLock);
    Keep(std::move(shared));
    return Publish({std::move(change)});
}

}  // namespace ZorvicUnit
