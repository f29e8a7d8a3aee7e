#pragma once

#include <map>
#include <string>

#include "zorvic/export.h"
#include "zorvic/types.h"

/// @file
/// Texts and sizes of video modes.

/// Display texts of the video modes; the invalid mode reads "Off".
ZORVIC_API extern const std::map<Zorvic::ResolutionMode, std::string> ResolutionMap;
/// Display texts of the refresh rates, in frames per second without a unit.
ZORVIC_API extern const std::map<Zorvic::RefreshMode, std::string> RefreshMap;
/// Pixel sizes of the video modes; the invalid mode has no entry.
ZORVIC_API extern const std::map<Zorvic::ResolutionMode, Zorvic::Size2D> ResolutionSizeMap;
