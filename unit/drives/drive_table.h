#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
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
    const DriveRoot* Drive = nullptr;  ///< lives as long as the table
    std::vector<std::string> Names;    ///< from the drive's root down; empty for the root itself

    /// "C:\Assets\clip.mov".
    std::string UnitPath() const;
    /// Where it is on the host; links on the way are not looked at.
    std::filesystem::path HostPath() const;
    /// Whether it lies below "C:\Assets".
    bool IsBelowAssets() const;
};

/// The unit's drives and the way between its paths and the host's. Immutable: safe to use from every thread.
class DriveTable {
public:
    /// The first drive is the unit's own store; no letter is given twice.
    explicit DriveTable(std::vector<DriveRoot> drives) : Drives(std::move(drives)) {}

    const std::vector<DriveRoot>& All() const { return Drives; }
    /// By letter, in either case; NotFound.
    const DriveRoot& Find(std::string_view letter) const;

    /// A whole path of the unit. Repeated backslashes count as one. Misused: anything that is not "X:\name\name", or
    /// with
    /// "..", a slash, a control character or broken UTF-8 in it; NotFound: no such drive.
    DrivePlace Parse(std::string_view path) const;
    /// A path below a drive, empty for its root.
    DrivePlace Parse(std::string_view letter, std::string_view path) const;

private:
    const std::vector<DriveRoot> Drives;
};

/// The file or directory on the host, with all links followed. Throws NotFound when it is not there, Refused when it
/// lies outside its drive. Touches the disk.
std::filesystem::path ResolveOnDrive(const DrivePlace& place);
/// Whether the same would succeed.
bool StaysOnDrive(const DrivePlace& place);

}  // namespace ZorvicUnit
