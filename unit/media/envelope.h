#pragma once

#include "asset_catalog.h"
#include "media/media_file.h"

#include <optional>
#include <string>

namespace ZorvicUnit {

/// Level of a meter for a peak between 0 and 1: decibels, so that -60 dBFS and below is 0, full scale is 100, and every
/// 0.6 dB between is one step.
std::uint8_t MeterLevel(float peak);

/// Decodes the sound of a media file once, from start to end, and notes the peak of every step. Of more than two
/// channels the first two count. Steps before the sound begins are silent; at most 24 hours are kept. Nothing when the
/// file has no sound that can be decoded. Throws Fault like MediaFile; stops within a second of limit.Stop (Slow).
std::optional<Envelope> ReadEnvelope(const Descriptor& file, const std::string& name, const ReadLimit& limit);

}  // namespace ZorvicUnit
