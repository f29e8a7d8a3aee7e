#pragma once

#include <chrono>

namespace ZorvicUnit {

// Files that are read through fill a disk's queue, and some disks let a save wait in it, whatever the priorities say.
// Both for any thread.

/// Says that somebody waits for the disk.
void NoteSave();
/// For who has read for so long and has time: when somebody saved within the last second, pauses for longer than that,
/// so that the disk is mostly free.
void GiveWayToSaves(std::chrono::nanoseconds busy);

}  // namespace ZorvicUnit
