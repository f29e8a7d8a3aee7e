#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// A directory of the host as the unit shows it.
struct DriveRoot {
    std::string Letter;  ///< one capital letter
    std::filesystem::path Directory;
    bool External = true;
};

/// A place on a drive, by names that were checked one by one.
struct DrivePlace {
    const DriveRoot* Drive = nullptr;  ///< outlives the place
    std::vector<std::string> Names;    ///< from the drive's root down; empty for the root itself

    /// "C:\Assets\clip.mov", as consoles name it.
    std::string Path() const;
    /// Where it is on the host; links on the way are not looked at.
    std::filesystem::path HostPath() const;
    /// Whether it lies below "C:\Assets".
    bool IsBelowAssets() const;
};

/// The file or directory on the host, with all links followed. Throws NotFound when it is not there, Refused when it
/// lies outside its drive. Touches the disk.
std::filesystem::path ResolveOnDrive(const DrivePlace& place);
/// Whether the same would succeed.
bool StaysOnDrive(const DrivePlace& place);

}  // namespace ZorvicUnit
