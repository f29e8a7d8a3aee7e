#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include <zorvic/asrun.h>
#include <zorvic/preview.h>
#include <zorvic/zorvic.h>

/// The unit control library, scripted and in process: console tests link it instead of the real one. Units are plain
/// data that a test fills and reads; every call of the console is recorded.
///
/// Everything is used on one thread (the GUI thread). No events are delivered: a test says what an event would have
/// brought about.
namespace FakeZorvic {

/// One call into the library, in the console's own terms.
struct Call {
    std::string Operation;                ///< member name, for example "Take"; "Session" for the constructor
    std::int32_t PK = 0;                  ///< of the preset, where there is one (0 in a created preset)
    std::int64_t Number = 0;              ///< time in ms, or the event type of a registration
    std::vector<std::string> Texts = {};  ///< text arguments in order: name, path, drive, host
    std::optional<Zorvic::Preset> Sent = std::nullopt;  ///< the preset of CreatePreset and UpdatePreset
    std::string Host = {};                              ///< host text of the session; empty for free functions

    /// "SeekTo 7 1500", "CreateGoto 7 1000 Verse", "GetPresets": the operation and its arguments, without the host.
    std::string ToString() const;
};

/// What a unit holds and how it answers. Take, UpdatePreset and RenameGoto have their effect on it; other commands are
/// only recorded.
struct Unit {
    std::string GUID;
    std::string Nickname;
    std::vector<Zorvic::Preset> Presets = {};
    std::vector<Zorvic::PresetState> States = {};
    std::vector<Zorvic::Asset> Assets = {};
    std::map<std::string, Zorvic::AssetMetadata> Metadata = {};  ///< by asset path; without an entry the read fails
    std::vector<Zorvic::Drive> Drives = {};
    std::map<std::pair<std::string, std::string>, std::vector<Zorvic::ExternalAsset>> Listings = {};  ///< drive, path
    std::map<std::int32_t, Zorvic::TimeCode> TimeCodes = {};  ///< by PK; without an entry the read fails
    Zorvic::KonaHardwareState Hardware = {};
    std::vector<Zorvic::OutputPicture> Pictures = {};  ///< what its outputs show
    std::vector<Zorvic::AsRunEntry> AsRun = {};        ///< news of its sheet; whoever takes them empties it
    bool AsRunAnew = false;
    Zorvic::AsRunSheet::State AsRunState = Zorvic::AsRunSheet::State::Live;
    bool Reachable = true;    ///< off: sessions have no link
    std::string Reason = {};  ///< why it refuses a link, or what Fail() names; a real one gives each its own

    /// Adds a preset with its state, as if stored long ago. A PK of 0 becomes the next free one. Returns the PK.
    std::int32_t AddPreset(Zorvic::Preset preset, std::int32_t trtMS);
    // Null when there is none.
    Zorvic::Preset* FindPreset(std::int32_t pk) { return Find(Presets, pk); }
    Zorvic::PresetState* FindState(std::int32_t pk) { return Find(States, pk); }
    template <typename Record>
    static Record* Find(std::vector<Record>& records, std::int32_t pk) {
        const auto found = std::ranges::find(records, pk, &Record::PK);
        return found == records.end() ? nullptr : &*found;
    }
    /// The next `times` calls of the operation return `status` and do nothing; without `times` all calls do.
    void Fail(const std::string& operation, Zorvic::StatusCode status, std::optional<int> times = std::nullopt) {
        Failures[operation] = {status, times};
    }
    std::map<std::string, std::pair<Zorvic::StatusCode, std::optional<int>>> Failures = {};
};

inline std::map<std::string, std::shared_ptr<Unit>> Units;  ///< by the host text that they answer under
inline std::vector<Zorvic::LANZorvic> LANUnits;             ///< what GetLANZorvics() answers
inline std::vector<Call> Calls;                             ///< everything called so far, in order
inline int LivePreviews = 0;                                ///< how many watch the outputs of units now
/// Runs at the start of every operation, after it was recorded and before it takes effect. It may do what an event
/// loop inside the operation could do.
inline std::function<void(const Call&)> Hook;

/// Removes all units, the LAN list, the hook and the record. Sessions that still live keep their unit.
void Reset();

/// A unit that answers under this host text. The reference stays good until Reset().
Unit& AddUnit(const std::string& host, const std::string& guid);

/// How often each operation was called: what one gesture or one round of refreshes reads, when the calls were cleared
/// before it.
std::map<std::string, int> Counts();
/// What was sent to units, as text: everything but reads, registrations and the life of sessions.
std::vector<std::string> Commands();
/// The last call of the operation. Throws std::out_of_range when there was none.
Call LastCall(const std::string& operation);

/// How many event callbacks are registered now, with this user pointer or with any. None may be left when the view that
/// it points to is gone.
std::ptrdiff_t Registrations(const void* user = nullptr);

/// Session objects alive now; with a host, those opened with that text. Reset() does not change it.
std::ptrdiff_t LiveSessions(const std::string& host = {});

}  // namespace FakeZorvic
