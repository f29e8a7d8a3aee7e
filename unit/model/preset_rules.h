#pragma once

#include <google/protobuf/field_mask.pb.h>
#include <zorvic/v1/unit.pb.h>

#include <cstddef>
#include <cstdint>

namespace ZorvicUnit {

/// What a stored preset must be. Violations throw Fault Misused with a text that names what is wrong.
constexpr std::size_t MaxPresets = 10'000;
constexpr int MaxCanvases = 16;
constexpr std::uint64_t MaxPlayers = 4;
constexpr int MaxAssets = 64;    ///< on one canvas
constexpr int MaxMarks = 1'000;  ///< of each kind
constexpr int MaxTabs = 256;
constexpr int MaxVolumes = 64;  ///< channels
constexpr std::size_t MaxNameBytes = 256;
constexpr std::size_t MaxNotesBytes = 64UL * 1024;
constexpr std::size_t MaxPresetBytes = 512UL * 1024;
constexpr std::size_t MaxStoredBytes = 256UL * 1024 * 1024;  ///< all presets together

/// Copies the fields that the mask names from sent. A name that is not a top-level field other than the key is misuse.
void MergeFields(zorvic::v1::Preset& stored, const zorvic::v1::Preset& sent, const google::protobuf::FieldMask& mask);

/// Brings marks and tab entries into order, and adds the entry of tab 0 with the given index when there is none.
void Normalise(zorvic::v1::Preset& preset, std::int32_t tabIndex);

/// The preset's place in tab 0, or null.
const zorvic::v1::TabOrdering* FirstTab(const zorvic::v1::Preset& preset);

/// Throws when the (normalised) preset may not be stored.
void CheckPreset(const zorvic::v1::Preset& preset);

/// Size of a preset as the limits count it: without the key, which it does not have yet when it is made, so that the
/// largest one can be edited, too.
std::size_t BytesOf(const zorvic::v1::Preset& preset);

using Marks = google::protobuf::RepeatedPtrField<zorvic::v1::Mark>;
/// The marks of the kind; misuse when there is no such kind.
Marks& MarksOf(zorvic::v1::Preset& preset, zorvic::v1::MarkKind kind);
/// The mark at this time, or the end of the list.
Marks::iterator FindMark(Marks& marks, std::int32_t timeMS);
/// An id that no mark of the list has: behind the last one, as long as there are numbers.
std::int32_t NextMarkId(const Marks& marks);

}  // namespace ZorvicUnit
