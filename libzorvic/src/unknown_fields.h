#pragma once

#include "wire.h"

#include <cstdint>
#include <map>
#include <memory>

namespace Zorvic::Internal {

/// Presets, by key, that hold fields which only a newer library knows, of their own or in a canvas, asset, mark or tab.
/// Records have no room for them, and a field of a preset is written whole: without this, moving an asset would wipe
/// what a newer console has set on it. (Fields of the preset itself are not written unless they are edited.)
using UnknownFields = std::map<std::int32_t, std::shared_ptr<const Wire::Preset>>;

bool HoldsUnknownFields(const Wire::Preset& preset);
/// Gives the parts of `sent` what this library does not know of the same parts in `stored`: canvases are the same by
/// index, assets by path and order within a canvas, marks and tabs by their id.
void KeepUnknownFields(const Wire::Preset& stored, Wire::Preset& sent);

}  // namespace Zorvic::Internal
