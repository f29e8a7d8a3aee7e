#include "tls/revoked_file.h"

#include "fault.h"
#include "files/descriptor.h"

#include <fcntl.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <sstream>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

std::int64_t Nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// Whoever types a number need not know that certificates hold it in capitals.
char ToUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

RevokedFile::Serials SerialsIn(const std::string& text) {
    RevokedFile::Serials serials;
    std::istringstream words(text);
    for (std::string serial; words >> serial;) {
        std::ranges::transform(serial, serial.begin(), ToUpper);
        serials.insert(serial);
    }
    return serials;
}

}  // namespace

RevokedFile::RevokedFile(std::filesystem::path file) : File(std::move(file)), Seen(StampNow()) {
    if (!Seen) return;
    try {
        Known = SerialsIn(Read());
    } catch (const std::system_error& error) {
        throw Fault(FaultKind::Misused, fmt::format("--tls-dir: cannot read {}: {}", File.string(), error.what()));
    }
    spdlog::info("{} certificates are revoked", Known.size());
}

bool RevokedFile::Look(TimePoint now) {
    const auto stamp = StampNow();
    if (stamp != Seen) {
        Seen = stamp;
        Since = now;
        Settled = false;
    }
    if (Settled) return false;
    const bool settled = now - Since >= SettleTime;
    try {
        const bool changed = TakeOver(Seen ? Read() : std::string(), settled);
        Settled = settled;
        return changed;
    } catch (const std::system_error& error) {
        Tell(error.what());
        return false;
    }
}

bool RevokedFile::TakeOver(const std::string& text, bool settled) {
    Serials found = SerialsIn(text);
    const bool whole = text.ends_with('\n') && !found.empty();
    const bool less = !std::ranges::includes(found, Known);
    if (less && settled && !whole) Tell(Seen ? "it is empty or ends within a line" : "it is gone");
    if (whole && settled) Told.clear();
    if (less && !(whole && settled)) found.insert(Known.begin(), Known.end());
    if (found == Known) return false;
    Known.swap(found);
    spdlog::info("{} certificates are revoked", Known.size());
    return true;
}

void RevokedFile::Tell(const std::string& trouble) {
    if (std::exchange(Told, trouble) == trouble) return;
    spdlog::warn("cannot use the revoked certificates in {}: {}; those known before stay revoked", File.string(),
                 trouble);
}

std::optional<RevokedFile::Stamp> RevokedFile::StampNow() const {
    struct stat status {};
    if (stat(File.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
    return Stamp{.Node = status.st_ino,
                 .Size = status.st_size,
                 .Written = Nanoseconds(status.st_mtim),
                 .Changed = Nanoseconds(status.st_ctim)};
}

// A pipe in its place must not be waited for.
std::string RevokedFile::Read() const {
    const auto check = [](auto result) {
        if (result < 0) throw std::system_error(errno, std::generic_category());
        return result;
    };
    const Descriptor file(check(open(File.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)));
    std::string text;
    std::array<char, 4096> part{};
    while (const auto size = check(read(file.Get(), part.data(), part.size())))
        text.append(part.data(), static_cast<std::size_t>(size));
    return text;
}

}  // namespace ZorvicUnit
