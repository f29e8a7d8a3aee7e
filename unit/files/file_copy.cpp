#include "files/file_copy.h"

#include "fault.h"
#include "files/checksum.h"
#include "files/descriptor.h"
#include "files/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace ZorvicUnit {

namespace {

// Left for the preset store: an import must not be what keeps an edit from being saved.
constexpr std::int64_t Reserve = std::int64_t{8} << 20U;
// So much is written between two waits for the disk, within which the copy must be seen to move.
constexpr std::int64_t LeastStretch = std::int64_t{256} << 10U;
constexpr std::int64_t LongestStretch = std::int64_t{8} << 20U;
constexpr std::chrono::milliseconds ShortWait{25};
constexpr std::chrono::milliseconds LongWait{100};

[[noreturn]] void Fail(const std::string& what) {
    const bool full = errno == ENOSPC || errno == EDQUOT || errno == EFBIG;
    throw Fault(full ? FaultKind::DiskFull : FaultKind::Internal, what + ": " + std::strerror(errno));
}

/// A new file, written piece by piece.
class Target {
public:
    Target(const std::filesystem::path& file, std::int64_t size)
        : Name(file.string()), File(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644)) {
        if (!File.IsOpen()) Fail("cannot create " + Name);
        struct statvfs figures = {};
        if (fstatvfs(File.Get(), &figures) == 0) {
            const auto free = static_cast<std::int64_t>(figures.f_bavail) * static_cast<std::int64_t>(figures.f_frsize);
            if (free < size + Reserve)
                throw Fault(FaultKind::DiskFull, "no room for " + std::to_string(size) + " bytes");
        }
        // Not every file system can reserve; writing then tells.
        if (size > 0 && fallocate(File.Get(), 0, 0, size) != 0 &&
            (errno == ENOSPC || errno == EDQUOT || errno == EFBIG))
            Fail("no room for " + Name);
    }

    void Write(std::span<const char> bytes) {
        while (!bytes.empty()) {
            const ssize_t written = write(File.Get(), bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) Fail("cannot write " + Name);
            bytes = bytes.subspan(static_cast<std::size_t>(written));
            Done += written;
        }
        if (Done - Flushed >= Stretch) Flush();
    }

    std::int64_t Size() const { return Done; }

    void Finish() {
        if (fsync(File.Get()) != 0) Fail("cannot write " + Name);
        posix_fadvise(File.Get(), 0, 0, POSIX_FADV_DONTNEED);
        if (File.Close() != 0) Fail("cannot write " + Name);
    }

private:
    // Starts writing the newest stretch and waits for the one before, so that never much is left for a long flush.
    void Flush() {
        const auto began = std::chrono::steady_clock::now();
        sync_file_range(File.Get(), Flushed, Done - Flushed, SYNC_FILE_RANGE_WRITE);
        sync_file_range(File.Get(), Settled, Flushed - Settled,
                        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
        posix_fadvise(File.Get(), Settled, Flushed - Settled, POSIX_FADV_DONTNEED);
        Settled = Flushed;
        Flushed = Done;
        const auto waited = std::chrono::steady_clock::now() - began;
        if (waited > LongWait) Stretch = std::max(Stretch / 2, LeastStretch);
        if (waited < ShortWait) Stretch = std::min(Stretch * 2, LongestStretch);
    }

    const std::string Name;
    Descriptor File;
    std::int64_t Stretch = LeastStretch;
    std::int64_t Done = 0;
    std::int64_t Flushed = 0;
    std::int64_t Settled = 0;
};

}  // namespace

std::string CopyToDisk(const std::filesystem::path& source, const std::filesystem::path& target, std::int64_t size,
                       const std::atomic<bool>& stop, const std::function<void(std::int64_t)>& progress) {
    Target file(target, size);
    Checksum checksum;
    ReadWhole(source, stop, [&](std::span<const char> bytes) {
        if (file.Size() + static_cast<std::int64_t>(bytes.size()) > size)
            throw Fault(FaultKind::Internal, source.string() + " grew while it was copied");
        file.Write(bytes);
        checksum.Add(bytes);
        progress(file.Size());
    });
    if (file.Size() != size) throw Fault(FaultKind::Internal, source.string() + " shrank while it was copied");
    file.Finish();
    return checksum.Hex();
}

void SyncFile(const std::filesystem::path& file) {
    const Descriptor opened(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened.IsOpen() || fsync(opened.Get()) != 0) Fail("cannot write " + file.string());
}

void MakeDirectories(const std::filesystem::path& directory) {
    if (std::filesystem::is_directory(directory)) return;
    const auto above = directory.parent_path();
    if (!above.empty() && above != directory) MakeDirectories(above);
    if (mkdir(directory.c_str(), 0777) != 0 && errno != EEXIST) Fail("cannot make " + directory.string());
    SyncDirectory(above.empty() ? "." : above);
}

void SyncDirectory(const std::filesystem::path& directory) {
    const Descriptor opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.IsOpen() || fsync(opened.Get()) != 0) Fail("cannot write " + directory.string());
}

}  // namespace ZorvicUnit
