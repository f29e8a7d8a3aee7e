#pragma once

#include <zorvic/v1/unit.pb.h>

#include <string>
#include <vector>

namespace ZorvicUnit {

/// Assets that are new or changed (whole), and paths that are gone; a path stands in one of the two lists only.
struct AssetChanges {
    std::vector<zorvic::v1::Asset> Upserted;
    std::vector<std::string> Removed;
};

}  // namespace ZorvicUnit
