#pragma once

#include "wire.h"

#include <zorvic/types.h>

namespace Zorvic::Internal {

// Records from the wire and back. Every value of the wire gives a record: enumerations pass through unchanged, a volume
// beyond the record's range becomes the loudest one.

Preset FromWire(const Wire::Preset& wire);
PresetState FromWire(const Wire::PresetState& wire);
TimeCode FromWire(const Wire::TimeCode& wire);
KonaHardwareState FromWire(const Wire::HardwareState& wire);
Asset FromWire(const Wire::Asset& wire);
AssetMetadata FromWire(const Wire::AssetMetadata& wire);
Drive FromWire(const Wire::Drive& wire);
ExternalAsset FromWire(const Wire::DirectoryEntry& wire);

/// Lists in the order the protocol asks for; picture values as they are in the record.
Wire::Preset ToWire(const Preset& preset);

/// A picture value as it is stored: within 1e-6 of k/100 it becomes the float of smallest magnitude not below |k|/100,
/// so that a console which cuts it to whole hundredths reads the number back that its operator set. Idempotent.
float StoredPictureValue(float value);
/// StoredPictureValue for every picture value of the preset.
void RoundPictureValues(Wire::Preset& preset);

}  // namespace Zorvic::Internal
