#pragma once

#include "files/drive_place.h"

#include <zorvic/v1/unit.pb.h>

#include <vector>

namespace ZorvicUnit {

/// One directory of a drive: directories, then files that are called like media, each by name without regard to the
/// case of ASCII letters. Hidden names, names that a console cannot show and links that leave the drive are left out.
/// Takes as long as the disk does. Throws Fault: NotFound, Misused (no directory), Refused (leads out of the drive).
std::vector<zorvic::v1::DirectoryEntry> ListDirectoryNow(const DrivePlace& place);

}  // namespace ZorvicUnit
