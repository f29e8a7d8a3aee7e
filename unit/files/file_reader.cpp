#include "files/file_reader.h"

#include "fault.h"
#include "files/give_way.h"
#include "files/regular_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <vector>

namespace ZorvicUnit {

namespace {

constexpr std::size_t PieceBytes = std::size_t{256} << 10U;
// Done for every piece it would cost a third of the speed.
constexpr off_t ForgetBytes = off_t{8} << 20U;

}  // namespace

void ReadWhole(const std::filesystem::path& file, const std::atomic<bool>& stop,
               const std::function<void(std::span<const char>)>& take) {
    const Descriptor source = OpenRegularFile(file);
    posix_fadvise(source.Get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    std::vector<char> piece(PieceBytes);
    off_t done = 0;
    off_t forgotten = 0;
    while (true) {
        const auto began = std::chrono::steady_clock::now();
        if (stop) throw Fault(FaultKind::Slow, "stopped reading " + file.string());
        const ssize_t got = read(source.Get(), piece.data(), piece.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw Fault(FaultKind::Internal, "cannot read " + file.string() + ": " + std::strerror(errno));
        if (got == 0) break;
        take(std::span(piece.data(), static_cast<std::size_t>(got)));
        done += got;
        GiveWayToSaves(std::chrono::steady_clock::now() - began);
        if (done - forgotten < ForgetBytes) continue;
        posix_fadvise(source.Get(), forgotten, done - forgotten, POSIX_FADV_DONTNEED);
        forgotten = done;
    }
    posix_fadvise(source.Get(), 0, 0, POSIX_FADV_DONTNEED);
}

}  // namespace ZorvicUnit
