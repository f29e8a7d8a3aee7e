#pragma once

#include <string>
#include <unordered_map>

#include <zorvic/types.h>

/// Display names of unit roles and types. A newer unit may send a value that has no entry: guard the look-up.
extern const std::unordered_map<Zorvic::UnitRole, std::string> RoleNames;
extern const std::unordered_map<Zorvic::UnitType, std::string> UnitNames;
