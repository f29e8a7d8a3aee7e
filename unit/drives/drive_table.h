#pragma once

#include "files/drive_place.h"

#include <string_view>
#include <utility>
#include <vector>

namespace ZorvicUnit {

/// The unit's drives and the way between its paths and the host's. Immutable: safe to use from every thread.
class DriveTable {
public:
    /// The first drive is the unit's own store; no letter is given twice.
    explicit DriveTable(std::vector<DriveRoot> drives) : Drives(std::move(drives)) {}

    const std::vector<DriveRoot>& All() const { return Drives; }
    /// By letter, in either case; NotFound.
    const DriveRoot& Find(std::string_view letter) const;

    /// A whole path of the unit. Repeated backslashes count as one. Misused: anything that is not "X:\name\name", or
    /// holds "..", a slash, a control character or broken UTF-8; NotFound: no such drive.
    DrivePlace Parse(std::string_view path) const;
    /// A path below a drive, empty for its root.
    DrivePlace Parse(std::string_view letter, std::string_view path) const;

private:
    const std::vector<DriveRoot> Drives;
};

}  // namespace ZorvicUnit
