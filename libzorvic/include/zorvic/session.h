#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zorvic/export.h"
#include "zorvic/types.h"

namespace Zorvic {

/// Called on a thread of the library, outside its locks. It must return quickly and call nothing of the library but
/// SetStateEventCallback, which it may use on its own session.
using StateEventCallback = void (*)(StateEventType type, void* user);

/// One live connection to one unit.
///
/// Reads are answered from a local mirror of the unit and never wait for the network. Commands wait until the unit has
/// carried them out and the mirror shows their effect, at most 2 s. Without a link every operation fails at once with
/// ZORVIC_STATUS_NETWORKERROR. Output parameters hold nothing of use after a failure. The operations of one session may
/// be called from one thread at a time; callbacks arrive on a thread of the library meanwhile.
class ZORVIC_API Session {
public:
    /// Opens the connection and waits at most 2 s for the unit's state. Ask Connected() whether it worked.
    /// `host` is an address, `address:port` or a resolvable name; the default port is 9477. `flag` is reserved: pass 1.
    Session(const std::string& host, int flag);
    /// Closes the connection. No callback runs any more when this returns.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// True while the link is up. A silent unit counts as down after 1.5 s.
    bool Connected() const;
    /// The host text this session was opened with, unchanged.
    std::string GetHost() const;
    /// Starts to re-establish the link and waits at most 20 ms for it; an unfinished attempt goes on in the background
    /// for up to 9 s, and a call meanwhile only waits for it again. An empty host means the same one as before. A unit
    /// with another GUID than before is refused. OK when the link is up on return, else ZORVIC_STATUS_NETWORKERROR.
    StatusCode Reconnect(const std::string& host);
    /// The unit's unique id (never empty on success) and its display name.
    StatusCode GetUnitID(std::string& guid, std::string& nickname);

    /// The whole preset list, replacing the caller's, in order of PK.
    StatusCode GetPresets(std::vector<Preset>& presets);
    /// One state per preset, in order of PK.
    StatusCode GetPresetStates(std::vector<PresetState>& states);
    /// Adds a preset; the unit assigns PK (that of the argument is ignored). One that ends with
    /// ZORVIC_STATUS_NETWORKERROR may yet have been added; the same call within the next minute is the same request and
    /// does not add a second one. So it is with CreateGoto and CreateCountdown.
    StatusCode CreatePreset(const Preset& preset);
    /// Writes the fields that were edited, so that it undoes nobody's edit of another one; without an edit it sends
    /// nothing. Edited is what differs from the version that was handed out or written last for this PK. A refresh that
    /// reads between an edit's reading and its writing changes nothing: while that newer version is less than a second
    /// old, a copy with a new value is compared with the ones before it, too (back to the last write), and the one with
    /// the fewest differences counts. A copy held longer is written as it is, and the last writer wins.
    /// ZORVIC_STATUS_FAILED for an unknown PK, ZORVIC_STATUS_MISUSED for refused content.
    StatusCode UpdatePreset(const Preset& preset);
    /// Removes a preset. Refused with ZORVIC_STATUS_FAILED while it plays.
    StatusCode DeletePreset(std::int32_t pk);
    /// Makes a preset the unit's selected one.
    StatusCode SelectPreset(std::int32_t pk);

    /// Starts at the in point, resumes a paused preset, or starts a playing one again.
    StatusCode Take(std::int32_t pk);
    /// Pauses a playing preset, resumes a paused one. What is wanted follows from the states as this session knows
    /// them, and takes effect once, however often and by how many sessions it is asked for at the same time.
    StatusCode Pause(std::int32_t pk);
    /// Stops a preset; one that does not play loses its cue.
    StatusCode End(std::int32_t pk);
    /// Moves the play position to a remaining time in ms, clamped to the running time; values above the signed range
    /// count as 0. On a stopped preset it cues the next take.
    StatusCode SeekTo(std::int32_t pk, std::uint32_t timeMS);

    /// @{
    /// Marks. Times are remaining times in ms and unique per preset and kind: a second mark at the same time is
    /// refused. Rename and delete address a mark by its time.
    StatusCode CreateGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name);
    StatusCode CreateCountdown(std::int32_t pk, std::int32_t timeMS, const std::string& name);
    StatusCode RenameGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name);
    StatusCode RenameCountdown(std::int32_t pk, std::int32_t timeMS, const std::string& name);
    StatusCode DeleteGoto(std::int32_t pk, std::int32_t timeMS);
    StatusCode DeleteCountdown(std::int32_t pk, std::int32_t timeMS);
    /// @}

    /// Play position and audio levels of a preset; of a stopped one that is cued, where its next take begins, and
    /// levels of 0. ZORVIC_STATUS_FAILED when the preset is stopped without a cue.
    StatusCode GetTimeCode(TimeCode& timeCode, std::int32_t pk);
    /// Set-up of the unit's outputs.
    StatusCode GetKonaHardwareState(KonaHardwareState& state);

    /// All assets in the unit's store, by path.
    StatusCode GetAssets(std::vector<Asset>& assets);
    /// Refused with ZORVIC_STATUS_FAILED for an asset that a playing preset uses.
    StatusCode DeleteAsset(const std::string& path);
    /// What the unit's probe found; a round trip only when the unit has not sent it with the asset list.
    StatusCode ReadAssetMetadata(const std::string& path, AssetMetadata& metadata);
    /// The unit's drives, its own store first.
    StatusCode GetDisks(std::vector<Drive>& drives);
    /// Entries of one directory, directories first, each by name. Waits at most 150 ms: a slower listing fails, goes on
    /// in the unit and answers a later call.
    StatusCode GetDiskAssets(std::vector<ExternalAsset>& entries, const std::string& drive, const std::string& path);
    /// Starts to copy a file from a drive into the unit's store; progress shows in GetAssets.
    StatusCode InstallAsset(const std::string& path);

    /// Ends the unit and starts it again: the link is lost, and Reconnect finds it.
    StatusCode RebootZorvic();
    /// Ends all playback, and lets the unit read its presets again.
    StatusCode SoftRebootZorvic();
    /// Ends the unit; nothing here starts it again.
    StatusCode ShutdownZorvic();

    /// Registers fn for one kind of change, replacing an earlier registration; a null fn unregisters. When this
    /// returns, the earlier callback is not running and never runs again; so do not call it with a lock held that the
    /// callback takes. (From within a callback it does not wait for that one itself.) A registration is answered with
    /// one event of its type at once, survives Reconnect, and gets one event after every new snapshot. Works without a
    /// link, too. ZORVIC_STATUS_MISUSED for a type that is not between ZORVIC_STATE_INVALID and ZORVIC_STATE_MAX.
    StatusCode SetStateEventCallback(StateEventType type, StateEventCallback fn, void* user);

private:
    struct Impl;
    std::unique_ptr<Impl> Pimpl;
};

}  // namespace Zorvic
