#pragma once

#include "media/media_file.h"

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <string>

namespace ZorvicUnit {

/// How long a picture without motion lasts, ms.
constexpr std::int32_t StillMS = 10000;

/// Reads what a media file is: names of codecs and container as ffprobe gives them, rates in bits per second, frame
/// rate rounded (0 for a still), the size of the picture as it is displayed. What the file does not tell is 0 or empty.
/// FilePath is left empty; the name is for messages. Throws Fault like MediaFile, and Refused for what has no picture
/// and no sound.
zorvic::v1::AssetMetadata Probe(const Descriptor& file, const std::string& name, const ReadLimit& limit);

}  // namespace ZorvicUnit
