#pragma once

#include "asrun/recorder.h"
#include "caller.h"
#include "feed/feed.h"
#include "model/preset_rules.h"
#include "model/request_memory.h"
#include "playback/playback.h"
#include "store/preset_table.h"
#include "store/request_table.h"
#include "store/settings_table.h"

#include <google/protobuf/field_mask.pb.h>
#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace ZorvicUnit {

struct AssetChanges;

/// The unit as the protocol shows it: stored presets, what plays, which preset is selected. Every command is carried
/// out whole or throws Fault and changes nothing; it gives the feed's revision at which its effect shows. Safe to use
/// from several threads.
///
/// Two locks: the database's lets one command at a time change stored data and is held while the disk is written;
/// ModelLock guards what is in memory and is never held across a write, so that a slow disk delays neither timecodes
/// nor a take. Order: the database's, ModelLock, the feed's.
class UnitModel {
public:
    /// What the unit says of itself.
    struct Profile {
        zorvic::v1::Identity Identity;
        zorvic::v1::HardwareState Hardware;
        std::size_t MostBytes = MaxStoredBytes;  ///< of all presets together
    };

    /// Loads the presets and publishes everything. All references must outlive the object. Throws Fault when a stored
    /// preset is damaged.
    UnitModel(const Profile& profile, Database& database, const Clock& clock, const AssetCatalog& catalog, Feed& feed,
              Recorder& record = Recorder::None());

    // Commands that write: Fault TooLate when the caller had given up before its turn to write came; a repetition of a
    // request that was carried out lately only gives its revision again. `made` is told the key of the new preset.
    std::uint64_t CreatePreset(const zorvic::v1::Preset& sent, const Caller& caller = {}, std::int32_t* made = nullptr);
    std::uint64_t UpdatePreset(const zorvic::v1::Preset& sent, const google::protobuf::FieldMask& fields,
                               const Caller& caller = {});
    std::uint64_t DeletePreset(std::int32_t pk, const Caller& caller = {});
    std::uint64_t CreateMark(const zorvic::v1::MarkRequest& request, const Caller& caller = {});
    std::uint64_t RenameMark(const zorvic::v1::MarkRequest& request, const Caller& caller = {});
    std::uint64_t DeleteMark(const zorvic::v1::MarkRequest& request, const Caller& caller = {});

    // Commands that do not wait for the disk: Fault TooLate when the caller has given up.
    /// Whoever calls WaitForSelection() saves it.
    std::uint64_t SelectPreset(std::int32_t pk, const Caller& caller = {});
    std::uint64_t Take(std::int32_t pk, const Caller& caller = {});
    std::uint64_t Pause(std::int32_t pk, std::optional<bool> wanted = std::nullopt, const Caller& caller = {});
    std::uint64_t End(std::int32_t pk, const Caller& caller = {});
    std::uint64_t SeekTo(std::int32_t pk, std::uint32_t timeMS, const Caller& caller = {});

    // For whoever shows what plays; see Playback.
    std::uint64_t HoldColdTakes(bool on, std::chrono::nanoseconds refresh = {});
    std::uint64_t SetPrimed(std::vector<RunStart> ready);
    std::uint64_t MediaReady(std::int32_t pk, std::uint64_t run);
    /// What plays from now on, and what is likely to be taken next: the selected preset unless it plays, the one that
    /// it links to, and the one below it in the list.
    Outlook LookAhead(std::chrono::nanoseconds length);
    /// Called whenever LookAhead() has something to tell that it did not foretell; empty: nobody. It runs with
    /// ModelLock held and so may not call the model; when this returns, the one before does not run and never will.
    void SetPlayListener(std::function<void()> listener);

    /// Publishes changed assets, and lets playback know of new lengths.
    std::uint64_t ApplyAssets(const AssetChanges& changes);

    /// While it lives, no preset with this asset begins to play. The constructor throws Refused while one plays.
    class AssetHold {
    public:
        AssetHold(UnitModel& model, std::string path);
        ~AssetHold();
        AssetHold(const AssetHold&) = delete;
        AssetHold& operator=(const AssetHold&) = delete;

    private:
        UnitModel& Model;
        const std::string Path;
    };

    std::uint64_t Revision() const { return Updates.Revision(); }
    /// Carries out what is due, publishes positions, and shows the feed that the model moves; false when no position
    /// does any more.
    bool Tick();
    /// Returns when a position begins to move, when the time has passed, or when it is asked to stop.
    void WaitForPlay(const std::stop_token& stop, std::chrono::milliseconds limit);
    /// Writes the selection if it has changed. Throws Fault.
    void SaveSelection();
    /// Returns when another preset has been selected since SaveSelection() was called, at the latest at this time, and
    /// when it is asked to stop. True for another preset.
    bool WaitForSelection(const std::stop_token& stop, std::chrono::steady_clock::time_point until);
    /// Ends playback and reads the store again, also which requests were carried out. Throws Fault, and leaves all as
    /// it is, when the store is damaged.
    void Reload();

private:
    PresetPtr Find(std::int32_t pk);
    void Keep(PresetPtr preset);
    void Forget(std::int32_t pk);
    std::int32_t NextTabIndex() const;
    std::uint64_t Store(zorvic::v1::Preset edited, const zorvic::v1::Preset& stored, const Caller& caller);
    void ReserveRoom(const zorvic::v1::Preset& preset, std::size_t before);
    std::uint64_t ShowPreset(const zorvic::v1::Preset& preset);
    std::uint64_t Publish(std::vector<FeedChange> changes, const Asker& who = {});
    FeedChange StateNow(std::int32_t pk) const;
    void TellPlayListener();
    std::vector<std::int32_t> LikelyNext() const;
    template <typename Command>
    std::uint64_t Play(const Command& command, const Caller& caller = {});
    template <typename Command>
    std::uint64_t Write(const Caller& caller, const Command& command, std::int32_t* made = nullptr);
    template <typename Edit>
    std::uint64_t EditMarks(const zorvic::v1::MarkRequest& request, const Caller& caller, const Edit& edit);

    const std::size_t MostBytes;
    Database& Rows;  ///< its lock guards the six below, and lets presets change only in its holder's thread
    PresetTable Table;
    RequestTable Requests;
    SettingsTable Settings;
    RequestMemory Recent;
    std::int32_t SavedSelection = 0;
    std::size_t StoredBytes = 0;  ///< of all presets

    std::mutex ModelLock;  ///< guards everything below
    std::condition_variable_any PlayStarted;
    std::condition_variable_any SelectionMade;
    Playback Playing;
    std::map<std::int32_t, PresetPtr> Presets;
    std::int32_t Selected = 0;
    std::int32_t TriedSelection = 0;                         ///< the last one that was to be saved
    std::set<std::pair<std::int32_t, std::int32_t>> Places;  ///< tab index and key of each preset: the list's order
    std::int32_t ShownSelection = 0;                         ///< of the states last published
    std::function<void()> PlayListener;
    std::pair<std::uint64_t, std::int32_t> ToldOutlook{};  ///< version and selection that the listener was told of
    Feed& Updates;
    Recorder& Record;
};

}  // namespace ZorvicUnit
