#include "files/tree_walk.h"

#include "fault.h"
#include "files/names.h"

#include <dirent.h>
#include <fcntl.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace ZorvicUnit {

namespace {

constexpr std::size_t DeepestLevel = 64;

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

FileStamp StampOf(const struct stat& status) {
    return {status.st_size, std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

// What a failing disk does not show any more is not gone.
const dirent* NextEntry(DIR* directory, TreeContent& content) {
    errno = 0;
    const dirent* entry = readdir(directory);  // NOLINT(concurrency-mt-unsafe): the stream is the caller's own
    content.Complete = content.Complete && (entry != nullptr || errno == 0);
    return entry;
}

}  // namespace

FileStamp ReadStamp(const std::filesystem::path& file) {
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0) throw Fault(FaultKind::NotFound, file.string() + ": " + std::strerror(errno));
    if (!S_ISREG(status.st_mode)) throw Fault(FaultKind::NotFound, file.string() + " is not a regular file");
    return StampOf(status);
}

TreeContent TreeWalk::Walk(const Enter& enter) {
    TreeContent content;
    const DrivePlace folder{&Drive, {"Assets"}};
    if (StaysOnDrive(folder)) {
        WalkDirectory(folder, enter, content);
    } else {
        Leave({&Drive, {}}, "Assets", "it is not a directory of the store");
        content.Complete = false;
    }
    return content;
}

void TreeWalk::WalkDirectory(const DrivePlace& place, const Enter& enter, TreeContent& content) {
    const auto path = place.HostPath();
    enter(path);
    const Directory directory(opendir(path.c_str()));
    if (directory == nullptr) {
        content.Complete = content.Complete && errno == ENOENT;  // gone meanwhile: nothing of it is left to miss
        if (errno != ENOENT) Leave({&Drive, {}}, path.string(), std::strerror(errno));
        return;
    }
    while (const dirent* entry = NextEntry(directory.get(), content))
        if (!IsHidden(entry->d_name)) VisitEntry(dirfd(directory.get()), place, entry->d_name, enter, content);
}

void TreeWalk::VisitEntry(int directory, const DrivePlace& place, const std::string& name, const Enter& enter,
                          TreeContent& content) {
    struct stat status = {};
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        content.Complete = content.Complete && errno == ENOENT;
        return;
    }
    if (const char* problem = NameProblem(name)) return Leave(place, name, problem);
    DrivePlace entry = place;
    entry.Names.push_back(name);
    if (S_ISLNK(status.st_mode)) {
        if (!StaysOnDrive(entry)) return Leave(place, name, "it is a link that leads nowhere or off its drive");
        if (fstatat(directory, name.c_str(), &status, 0) != 0 || S_ISDIR(status.st_mode)) return;
    }
    if (S_ISREG(status.st_mode)) content.Files.push_back({entry.Path(), StampOf(status)});
    if (S_ISDIR(status.st_mode) && place.Names.size() < DeepestLevel) WalkDirectory(entry, enter, content);
}

void TreeWalk::Leave(const DrivePlace& place, const std::string& name, const char* reason) {
    if (Logged.insert(place.Path() + '\\' + name).second)
        spdlog::warn("leaving out \"{}\" in {}: {}", ForLog(name), place.Path(), reason);
}

}  // namespace ZorvicUnit
