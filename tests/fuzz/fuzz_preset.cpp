// An update of a preset: from the wire to the library's records and back, and through the unit's rules.

#include "conversions.h"
#include "fault.h"
#include "fuzz/fuzz.h"
#include "model/preset_rules.h"

#include <memory>

using namespace Zorvic::Internal;

namespace {

/// What the unit would store; nothing when it refuses.
std::unique_ptr<Wire::Preset> Stored(const Wire::UpdatePresetRequest& request) {
    auto preset = std::make_unique<Wire::Preset>();
    try {
        ZorvicUnit::MergeFields(*preset, request.preset(), request.fields());
        ZorvicUnit::Normalise(*preset, 0);
        ZorvicUnit::CheckPreset(*preset);
        return preset;
    } catch (const ZorvicUnit::Fault&) {
        return nullptr;
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Wire::UpdatePresetRequest request;
    if (!request.ParseFromArray(data, static_cast<int>(size))) return 0;
    const Wire::Preset once = ToWire(FromWire(request.preset()));
    Require(ToWire(FromWire(once)).SerializeAsString() == once.SerializeAsString());
    Wire::Preset rounded = once;
    RoundPictureValues(rounded);
    const std::string bytes = rounded.SerializeAsString();
    RoundPictureValues(rounded);
    Require(rounded.SerializeAsString() == bytes);

    const auto stored = Stored(request);
    if (!stored) return 0;
    // A console that reads it and writes it back changes nothing, and is not refused.
    *request.mutable_preset() = ToWire(FromWire(*stored));
    const auto again = Stored(request);
    Require(again && again->ByteSizeLong() <= ZorvicUnit::MaxPresetBytes);
    return 0;
}
