#pragma once

#include "wire.h"

#include <zorvic/asrun.h>

namespace Zorvic::Internal {

AsRunEntry FromWire(const Wire::AsRunEntry& wire);
Wire::AsRunRequest ToWire(const AsRunSheet::Range& range);

}  // namespace Zorvic::Internal
