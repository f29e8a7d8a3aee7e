#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "zorvic/export.h"
#include "zorvic/session.h"
#include "zorvic/types.h"

// An extension of the interface: what programs need that work for an operator who is not looking. Each operation counts
// as one of the session that it is given.

namespace Zorvic {

/// Why the session's latest command failed, in the unit's words; empty when it did not, or when the link failed.
ZORVIC_API std::string LastReason(const Session& session);

/// Why the session has no link, in words of the unit or of this library; of the latest try while another is
/// under way. Empty while there is a link, and when simply nobody answers.
ZORVIC_API std::string LinkProblem(const Session& session);

/// Of this library, as "3.0.0".
ZORVIC_API std::string LibraryVersion();

/// The key of the preset that the session's latest command, a CreatePreset, has made; 0 when it failed, or when the
/// unit is too old to tell.
ZORVIC_API std::int32_t LastCreatedPreset(const Session& session);

/// Who the unit is and which software it runs; IP is the host text of the session. A round trip.
ZORVIC_API StatusCode DescribeUnit(Session& session, LANZorvic& unit);

/// As Session::Pause, but says itself what is wanted: a preset that is so already stays so.
/// ZORVIC_STATUS_FAILED when it does not play.
ZORVIC_API StatusCode SetPaused(Session& session, std::int32_t pk, bool paused);

/// Asks whenever the unit has told something new, and first at once, until the condition holds; false when the time is
/// over or the link is down. The condition may call the session.
ZORVIC_API bool WaitUntil(Session& session, const std::function<bool()>& condition, std::chrono::milliseconds limit);

/// How well an output has shown what plays.
struct OutputFigures {
    std::uint32_t Output = 0;                  ///< its number, from 1
    std::uint64_t Shown = 0;                   ///< times that a new picture was shown
    std::uint64_t Dropped = 0;                 ///< pictures of media that were left out
    std::uint64_t Repeated = 0;                ///< times that a picture was shown again, the next was not ready
    std::uint64_t Late = 0;                    ///< times that a picture was shown after its time
    std::chrono::milliseconds FirstPicture{};  ///< from the latest take to its first picture
    std::chrono::milliseconds Seek{};          ///< from the latest jump to the exact picture
};

/// Counted since the unit began to show pictures.
struct UnitFigures {
    std::vector<OutputFigures> Outputs;       ///< by number; none when all are off
    std::uint64_t SoundUnderruns = 0;         ///< times at which there was no sound to play
    std::chrono::microseconds SoundOffset{};  ///< sound against the clock, positive: late
    std::uint64_t Memory = 0;                 ///< bytes that showing and playing takes
};

/// A round trip. ZORVIC_STATUS_UNIMPLEMENTED from a unit that is too old to tell.
ZORVIC_API StatusCode GetFigures(Session& session, UnitFigures& figures);

/// A preset as a JSON object of one line: every field, under the names and in the units of the protocol.
ZORVIC_API std::string PresetToJson(const Preset& preset);
/// False, and the preset unchanged, for all that is not exactly such an object. Fields that are missing are 0 or empty.
ZORVIC_API bool PresetFromJson(const std::string& json, Preset& preset);

/// A preset whole: a unit that is newer than this library may have given it fields that the record has no room for.
struct PresetRecord {
    Preset Known;
    /// Such fields as they came, by where in the preset they were: "" for the preset's own, "canvases/0/assets/1".
    std::map<std::string, std::string> Unknown;
};

/// All presets, in order of PK.
ZORVIC_API StatusCode GetPresetRecords(Session& session, std::vector<PresetRecord>& records);
/// As Session::CreatePreset.
ZORVIC_API StatusCode CreatePreset(Session& session, const PresetRecord& record);
/// Gives the preset with this PK every field of the record, whatever anybody has edited meanwhile. Unknown fields of
/// the preset itself are the exception: there is no word for them to the unit, and they stay as they are.
ZORVIC_API StatusCode ReplacePreset(Session& session, const PresetRecord& record);

}  // namespace Zorvic
