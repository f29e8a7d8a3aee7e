#pragma once

#include "backup.h"

#include <zorvic/compare.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ZorvicCtl {

/// What it takes to give a unit the presets of a backup. Presets are the same by name; none is ever deleted.
struct RestorePlan {
    struct Step {
        Zorvic::PresetRecord Wanted;  ///< with the numbers of the backup
        std::int32_t PK = 0;          ///< on the unit; 0 when it has to be made
        std::vector<Zorvic::FieldDifference> Fields;
    };

    std::vector<Step> Create;
    std::vector<Step> Change;
    std::vector<Step> Playing;  ///< that would be changed, if they did not play
    std::size_t Same = 0;
    std::vector<std::string> OnlyOnUnit;      ///< their names
    std::vector<Zorvic::Asset> MissingMedia;  ///< that the presets use
    std::vector<Zorvic::Asset> OtherMedia;    ///< of the same path and another content
    bool LeavesOutUnknown = false;  ///< the unit is older than the one the backup is of, and does not know all
    std::map<std::int32_t, std::int32_t> KeyOf;  ///< of presets of the backup that the unit has: the number there

    bool ChangesNothing() const { return Create.empty() && Change.empty(); }
};

/// `playing` are the numbers of the presets that play or are paused on the unit.
RestorePlan PlanRestore(const Backup& wanted, const Backup& unit, const std::set<std::int32_t>& playing);

}  // namespace ZorvicCtl
