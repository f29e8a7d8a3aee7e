#pragma once

#include "backup.h"

#include <cstdint>
#include <set>

namespace ZorvicCtl {

class Unit;

Backup ReadContents(Unit& unit);
/// Paused ones, too.
std::set<std::int32_t> PlayingPresets(Unit& unit);

}  // namespace ZorvicCtl
