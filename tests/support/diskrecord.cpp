#include "support/diskrecord.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <fstream>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace {

constexpr std::size_t SectorSize = 512;

struct Step {
    enum { Write, Resize, Sync, Make, Move, Remove, SyncNames } Kind;
    int File = 0;
    std::size_t Place = 0;  ///< or the size
    std::string Bytes = {};
    std::string Name = {};
    std::string To = {};
};

struct {
    std::mutex Lock;  ///< guards the rest
    std::filesystem::path Directory;
    ino_t DirectoryNumber = 0;
    std::map<ino_t, int> Files;
    int LastFile = 0;
    std::vector<Step> Steps;
    int UntilFailure = 0;
    bool Failed = false;
} Record;

/// The file's name when it is followed; the index of the log is no file that anybody finds after a power cut.
std::string Followed(const char* file) {
    const std::filesystem::path path(file);
    const std::string name = path.filename();
    return !Record.Directory.empty() && path.parent_path() == Record.Directory && !name.ends_with("-shm") ? name : "";
}

ino_t NumberOf(int file) {
    struct stat status = {};
    return fstat(file, &status) == 0 ? status.st_ino : 0;
}

/// 0 for one that is not followed.
int FileOf(int file) {
    const auto found = Record.Files.find(NumberOf(file));
    return found == Record.Files.end() ? 0 : found->second;
}

bool Fails() {
    if (Record.UntilFailure == 0 || --Record.UntilFailure > 0) return false;
    Record.Failed = true;
    errno = EIO;
    return true;
}

/// Carries out a step of a followed file, unless it is to fail.
template <typename Action>
auto Take(bool followed, Step step, const Action& action) -> decltype(action()) {
    const std::scoped_lock lock(Record.Lock);
    if (followed && Fails()) return -1;
    const auto result = action();
    if (followed && result >= 0) Record.Steps.push_back(std::move(step));
    return result;
}

int Open(const char* path, int flags, mode_t mode) {
    const std::scoped_lock lock(Record.Lock);
    const std::string name = Followed(path);
    const bool makes = !name.empty() && (flags & O_CREAT) != 0 && access(path, F_OK) != 0;
    if (makes && Fails()) return -1;
    const auto file = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
    if (file < 0 || name.empty()) return file;
    if (makes) {
        Record.Files[NumberOf(file)] = ++Record.LastFile;
        Record.Steps.push_back({.Kind = Step::Make, .File = Record.LastFile, .Name = name});
    } else if ((flags & O_TRUNC) != 0) {
        Record.Steps.push_back({.Kind = Step::Resize, .File = FileOf(file)});
    }
    return file;
}

int Synchronise(int file) {
    if (DiskRecord::BeforeSync) DiskRecord::BeforeSync();
    const bool names = NumberOf(file) == Record.DirectoryNumber;
    const int followed = FileOf(file);
    return Take(names || followed != 0, {.Kind = names ? Step::SyncNames : Step::Sync, .File = followed},
                [] { return 0; });
}

ssize_t WriteAt(int file, const void* bytes, std::size_t size, off_t place) {
    const int followed = FileOf(file);
    return Take(followed != 0,
                {.Kind = Step::Write,
                 .File = followed,
                 .Place = static_cast<std::size_t>(place),
                 .Bytes = std::string(static_cast<const char*>(bytes), followed != 0 ? size : 0)},
                [&] { return syscall(SYS_pwrite64, file, bytes, size, place); });
}

int Resize(int file, off_t size) {
    const int followed = FileOf(file);
    return Take(followed != 0, {.Kind = Step::Resize, .File = followed, .Place = static_cast<std::size_t>(size)},
                [&] { return static_cast<int>(syscall(SYS_ftruncate, file, size)); });
}

int Remove(const char* path) {
    const std::string name = Followed(path);
    const auto remove = [&] {
        const auto result = static_cast<int>(syscall(SYS_unlink, path));
        return result != 0 && errno == EISDIR ? static_cast<int>(syscall(SYS_rmdir, path)) : result;
    };
    return Take(!name.empty() && access(path, F_OK) == 0, {.Kind = Step::Remove, .Name = name}, remove);
}

/// What is on the disk of the files, some steps after they were synchronised.
std::string ContentOf(int file, std::size_t steps, std::mt19937& draw) {
    const auto& all = Record.Steps;
    std::size_t synchronised = 0;
    for (std::size_t i = 0; i < steps; ++i)
        if (all[i].File == file && all[i].Kind == Step::Sync) synchronised = i;
    const unsigned likely = std::array{0U, 50U, 90U, 100U}[draw() % 4];  // of 100
    std::string content;
    for (std::size_t i = 0; i < steps; ++i) {
        const Step& step = all[i];
        const auto arrives = [&] { return i < synchronised || draw() % 100 < likely; };
        if (step.File != file) continue;
        if (step.Kind == Step::Resize && arrives()) content.resize(step.Place);
        if (step.Kind != Step::Write) continue;
        for (std::size_t at = 0; at < step.Bytes.size(); at += SectorSize) {
            if (!arrives()) continue;
            std::size_t size = std::min(SectorSize, step.Bytes.size() - at);
            if (i >= synchronised && draw() % 8 == 0) size = draw() % size;
            content.resize(std::max(content.size(), step.Place + at + size));
            content.replace(step.Place + at, size, step.Bytes, at, size);
        }
    }
    return content;
}

}  // namespace

DiskRecord::DiskRecord(const std::filesystem::path& directory) {
    struct stat status = {};
    stat(directory.c_str(), &status);
    const std::scoped_lock lock(Record.Lock);
    Record.Directory = directory;
    Record.DirectoryNumber = status.st_ino;
}

DiskRecord::~DiskRecord() {
    const std::scoped_lock lock(Record.Lock);
    Record.Directory.clear();
    Record.DirectoryNumber = 0;
    Record.Files.clear();
    Record.Steps.clear();
    Record.UntilFailure = 0;
}

std::size_t DiskRecord::Steps() const {
    const std::scoped_lock lock(Record.Lock);
    return Record.Steps.size();
}

void DiskRecord::Fail(int step) {
    const std::scoped_lock lock(Record.Lock);
    Record.UntilFailure = step;
    Record.Failed = false;
}

bool DiskRecord::HasFailed() const {
    const std::scoped_lock lock(Record.Lock);
    return Record.Failed;
}

void DiskRecord::Leave(std::size_t steps, std::mt19937& draw, const std::filesystem::path& target) const {
    std::filesystem::create_directories(target);
    std::map<std::string, int> names;
    std::vector<const Step*> pending;
    const auto settle = [&](std::size_t count) {
        for (const Step* step : std::span(pending).first(count)) {
            if (step->Kind == Step::Make) names[step->Name] = step->File;
            if (step->Kind == Step::Move) names[step->To] = names[step->Name];
            if (step->Kind != Step::Make) names.erase(step->Name);
        }
        pending.clear();
    };
    for (std::size_t i = 0; i < steps; ++i) {
        const Step& step = Record.Steps[i];
        if (step.Kind == Step::SyncNames) settle(pending.size());
        if (step.Kind == Step::Make || step.Kind == Step::Move || step.Kind == Step::Remove) pending.push_back(&step);
    }
    settle(draw() % (pending.size() + 1));
    for (const auto& [name, file] : names)
        std::ofstream(target / name, std::ios::binary) << ContentOf(file, steps, draw);
}

#define ZORVIC_IN_PLACE extern "C" __attribute__((visibility("default")))

ZORVIC_IN_PLACE int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return Open(path, flags, mode);
}
ZORVIC_IN_PLACE int open64(const char* path, int flags, ...) __attribute__((alias("open")));
ZORVIC_IN_PLACE ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t place) {
    return WriteAt(file, bytes, size, place);
}
ZORVIC_IN_PLACE ssize_t pwrite64(int, const void*, std::size_t, off64_t) __attribute__((alias("pwrite")));
ZORVIC_IN_PLACE int ftruncate64(int file, off64_t size) noexcept {
    return Resize(file, size);
}
ZORVIC_IN_PLACE int fsync(int file) {
    return Synchronise(file);
}
ZORVIC_IN_PLACE int fdatasync(int) __attribute__((alias("fsync")));
ZORVIC_IN_PLACE int remove(const char* path) noexcept {
    return Remove(path);
}
ZORVIC_IN_PLACE int unlink(const char*) noexcept __attribute__((alias("remove")));
ZORVIC_IN_PLACE int rename(const char* from, const char* to) noexcept {
    const std::string name = Followed(from);
    return Take(!name.empty() && access(from, F_OK) == 0, {.Kind = Step::Move, .Name = name, .To = Followed(to)},
                [&] { return static_cast<int>(syscall(SYS_rename, from, to)); });
}
