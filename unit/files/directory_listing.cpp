#include "files/directory_listing.h"

#include "fault.h"
#include "files/names.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

namespace ZorvicUnit {

namespace {

using zorvic::v1::DirectoryEntry;

bool ByName(const DirectoryEntry& left, const DirectoryEntry& right) {
    if (left.directory() != right.directory()) return left.directory();
    const int order = strcasecmp(left.filename().c_str(), right.filename().c_str());
    return order != 0 ? order < 0 : left.filename() < right.filename();
}

// Nothing when the entry is not for a console: other kinds of file, and what leads off the drive.
std::optional<DirectoryEntry> Describe(const DrivePlace& place, const std::filesystem::directory_entry& found) {
    const std::string name = found.path().filename().string();
    if (IsHidden(name) || NameProblem(name) != nullptr) return std::nullopt;
    DrivePlace below = place;
    below.Names.push_back(name);
    std::error_code error;
    if (found.is_symlink(error) && !StaysOnDrive(below)) return std::nullopt;
    DirectoryEntry entry;
    entry.set_filename(name);
    entry.set_full_path(below.Path());
    entry.set_directory(found.is_directory(error));
    if (entry.directory()) return entry;
    if (!HasMediaExtension(name) || !found.is_regular_file(error)) return std::nullopt;
    const auto size = found.file_size(error);
    entry.set_size(error ? 0 : static_cast<std::int64_t>(size));
    return entry;
}

}  // namespace

std::vector<DirectoryEntry> ListDirectoryNow(const DrivePlace& place) {
    const auto path = ResolveOnDrive(place);
    std::error_code error;
    if (!std::filesystem::is_directory(path, error)) throw Fault(FaultKind::Misused, place.Path() + " is no directory");
    std::vector<DirectoryEntry> entries;
    for (std::filesystem::directory_iterator at(path, error), end; !error && at != end; at.increment(error))
        if (auto entry = Describe(place, *at)) entries.push_back(std::move(*entry));
    if (error) throw Fault(FaultKind::NotFound, "cannot list " + place.Path() + ": " + error.message());
    std::sort(entries.begin(), entries.end(), &ByName);
    return entries;
}

}  // namespace ZorvicUnit
