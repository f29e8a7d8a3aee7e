#pragma once

#include "files/drive_place.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// What tells one content of a file from the next without reading it.
struct FileStamp {
    std::int64_t Size = 0;
    std::int64_t ModifiedNS = 0;  ///< since 1970-01-01 UTC
    bool operator==(const FileStamp&) const = default;
};

/// Stamp of a regular file, links followed; throws NotFound (absent, or no regular file).
FileStamp ReadStamp(const std::filesystem::path& file);

struct FoundFile {
    std::string Path;
    FileStamp Stamp;
};

struct TreeContent {
    std::vector<FoundFile> Files;
    bool Complete = true;  ///< false when a directory could not be read: what is not listed may still be there
};

/// Finds the regular files below a drive's Assets directory. Left out: hidden names, names that a console cannot show
/// (logged once each), links to directories (they may run in circles) and links that leave the drive. For one thread at
/// a time.
class TreeWalk {
public:
    using Enter = std::function<void(const std::filesystem::path&)>;

    explicit TreeWalk(const DriveRoot& drive) : Drive(drive) {}

    /// Calls `enter` with every directory before it is read, so that a watch set there misses nothing.
    TreeContent Walk(const Enter& enter);

private:
    void WalkDirectory(const DrivePlace& place, const Enter& enter, TreeContent& content);
    void VisitEntry(int directory, const DrivePlace& place, const std::string& name, const Enter& enter,
                    TreeContent& content);
    void Leave(const DrivePlace& place, const std::string& name, const char* reason);

    const DriveRoot& Drive;
    std::set<std::string> Logged;
};

}  // namespace ZorvicUnit
