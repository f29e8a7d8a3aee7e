#include "model/unit_model.h"

#include "assets/asset_changes.h"
#include "feed/pieces.h"

#include <utility>

namespace ZorvicUnit {

namespace {

zorvic::v1::TimeCodes TimeCodesOf(const std::vector<PlayPosition>& positions) {
    zorvic::v1::TimeCodes codes;
    for (const PlayPosition& position : positions) {
        auto& code = *codes.add_timecodes();
        code.set_pk(position.PK);
        code.set_time_ms(position.RemainingMS);
        code.mutable_levels()->Assign(position.Levels.begin(), position.Levels.end());
    }
    return codes;
}

}  // namespace

template <typename Command>
std::uint64_t UnitModel::Play(const Command& command, const Caller& caller) {
    const std::scoped_lock lock(ModelLock);
    caller.CheckWaits();
    command();
    return Publish({}, caller.Who);
}

std::uint64_t UnitModel::Take(std::int32_t pk, const Caller& caller) {
    return Play([&] { Playing.Take(pk); }, caller);
}

std::uint64_t UnitModel::Pause(std::int32_t pk, std::optional<bool> wanted, const Caller& caller) {
    return Play([&] { Playing.Pause(pk, wanted); }, caller);
}

std::uint64_t UnitModel::End(std::int32_t pk, const Caller& caller) {
    return Play([&] { Playing.End(pk); }, caller);
}

std::uint64_t UnitModel::SeekTo(std::int32_t pk, std::uint32_t timeMS, const Caller& caller) {
    return Play([&] { Playing.Seek(pk, timeMS); }, caller);
}

std::uint64_t UnitModel::HoldColdTakes(bool on, std::chrono::nanoseconds refresh) {
    return Play([&] { Playing.HoldColdTakes(on, refresh); });
}

std::uint64_t UnitModel::SetPrimed(std::vector<RunStart> ready) {
    return Play([&] { Playing.SetPrimed(std::move(ready)); });
}

std::uint64_t UnitModel::MediaReady(std::int32_t pk, std::uint64_t run) {
    return Play([&] { Playing.MediaReady(pk, run); });
}

std::uint64_t UnitModel::ApplyAssets(const AssetChanges& changes) {
    std::vector<FeedChange> updates;
    std::vector<std::string> paths;
    for (const auto& asset : changes.Upserted) {
        updates.push_back(AssetChanged(asset));
        paths.push_back(asset.full_path());
    }
    for (const std::string& path : changes.Removed) {
        updates.push_back(AssetGone(path));
        paths.push_back(path);
    }
    const std::scoped_lock lock(ModelLock);
    if (!paths.empty()) Playing.AssetsChanged(paths);
    return Publish(std::move(updates));
}

UnitModel::AssetHold::AssetHold(UnitModel& model, std::string path) : Model(model), Path(std::move(path)) {
    const std::scoped_lock lock(Model.ModelLock);
    Model.Playing.HoldAsset(Path);
    Model.TellPlayListener();
}

UnitModel::AssetHold::~AssetHold() {
    const std::scoped_lock lock(Model.ModelLock);
    Model.Playing.ReleaseAsset(Path);
    Model.TellPlayListener();
}

bool UnitModel::Tick() {
    const std::scoped_lock lock(ModelLock);
    Playing.Advance();
    Publish({});
    Updates.Beat();
    return Playing.Rolling();
}

void UnitModel::WaitForPlay(const std::stop_token& stop, std::chrono::milliseconds limit) {
    std::unique_lock lock(ModelLock);
    PlayStarted.wait_for(lock, stop, limit, [this] { return Playing.Rolling(); });
}

// Called with ModelLock held, so that changes come to the feed in the order in which they happened. States and
// positions follow from the model; the feed leaves out what has not changed.
std::uint64_t UnitModel::Publish(std::vector<FeedChange> changes, const Asker& who) {
    if (const auto events = Playing.TakeEvents(); !events.empty()) Record.Played(events, who);
    auto changed = Playing.TakeChangedStates();
    if (Selected != ShownSelection) changed.merge(std::set{Selected, ShownSelection});
    ShownSelection = Selected;
    for (const std::int32_t pk : changed)
        changes.push_back(StateNow(pk));
    changes.push_back(TimeCodesChange(TimeCodesOf(Playing.Positions())));
    if (Playing.Rolling()) PlayStarted.notify_all();
    TellPlayListener();
    return Updates.Publish(std::move(changes));
}

FeedChange UnitModel::StateNow(std::int32_t pk) const {
    if (!Presets.contains(pk)) return StateGone(pk);
    const PlayState now = Playing.StateOf(pk);
    zorvic::v1::PresetState state;
    state.set_pk(pk);
    state.set_trt(now.TRT);
    state.set_current_loop(now.CurrentLoop);
    state.set_playing(now.Playing);
    state.set_paused(now.Paused);
    state.set_selected(pk == Selected);
    return StateChanged(state);
}

}  // namespace ZorvicUnit
