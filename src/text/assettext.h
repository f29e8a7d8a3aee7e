#pragma once

#include <zorvic/types.h>

#include <QString>

#include <cstdint>
#include <string>

// Texts about assets. Paths on a unit may use slashes or backslashes, whatever system the console runs on.

/// What follows the last separator; the whole text when there is none.
std::string StripPathFromFilename(const std::string& path);
/// What precedes the last separator, without it; empty when there is none.
std::string StripFilenameFromPath(const std::string& path);

/// Bytes as "512.00MiB", from 2^30 on as "1.50GiB".
QString SizeText(std::int64_t bytes);
/// "1920x1080@30"
QString DimensionsText(const Zorvic::AssetMetadata& metadata);
/// "h264/aac", or "h264" without audio.
QString CodecText(const Zorvic::AssetMetadata& metadata);
/// Empty for a state that this program does not know.
QString StatusText(Zorvic::AssetState state);
