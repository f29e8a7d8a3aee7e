#pragma once

#include <vector>

#include "zorvic/export.h"
#include "zorvic/types.h"

namespace Zorvic {

/// Units on the local network that answer, ordered by nickname, then GUID. Copies a list that a background browser
/// keeps and never waits; the browser starts with the first call and rests 10 s after the last. The environment
/// variable ZORVIC_DISCOVERY names the one interface to search, or is "off"; by default all interfaces are searched.
ZORVIC_API std::vector<LANZorvic> GetLANZorvics();

}  // namespace Zorvic
