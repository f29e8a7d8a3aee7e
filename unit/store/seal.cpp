#include "store/seal.h"

#include "fault.h"
#include "files/file_copy.h"

#include <spdlog/spdlog.h>
#include <xxhash.h>

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::string_view Head = "zorvic store, changes ";
constexpr std::size_t DigitCount = 20;
constexpr std::size_t BodySize = Head.size() + DigitCount;
// One line each, in its half of a sector. A line torn by a power cut leaves the one before.
constexpr std::size_t SlotSize = 64;
constexpr std::size_t SlotCount = 2;

std::string Slot(std::int64_t changes) {
    const std::string body = fmt::format("{}{:020}", Head, changes);
    return fmt::format("{} {:016x}{:>4}\n", body, XXH3_64bits(body.data(), body.size()), "");
}

std::optional<std::int64_t> ReadSlot(std::string_view slot) {
    if (slot.size() != SlotSize || !slot.starts_with(Head)) return std::nullopt;
    const std::string_view digits = slot.substr(Head.size(), DigitCount);
    std::int64_t changes = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), changes);
    return slot == Slot(changes) ? std::optional(changes) : std::nullopt;
}

off_t PlaceOf(std::int64_t changes) {
    return static_cast<off_t>(static_cast<std::uint64_t>(changes) % SlotCount * SlotSize);
}

[[noreturn]] void Raise(const std::filesystem::path& file) {
    const int reason = errno;
    throw Fault(reason == ENOSPC || reason == EDQUOT || reason == EFBIG ? FaultKind::DiskFull : FaultKind::Internal,
                fmt::format("store: {}: {}", file.string(), std::generic_category().message(reason)));
}

}  // namespace

static_assert(BodySize + 1 + 16 + 4 + 1 == SlotSize);

Seal::Seal(std::filesystem::path file) : Name(std::move(file)) {
    Slots.emplace(open(Name.c_str(), O_RDWR | O_CLOEXEC));
    if (!Slots->IsOpen() && errno != ENOENT) Raise(Name);
    Present = Slots->IsOpen();
    if (!Present) return;
    std::array<char, SlotSize * SlotCount> bytes{};
    const ssize_t size = pread(Slots->Get(), bytes.data(), bytes.size(), 0);
    if (size < 0) Raise(Name);
    const std::string_view text(bytes.data(), static_cast<std::size_t>(size));
    for (std::size_t at = 0; at < text.size(); at += SlotSize)
        Acknowledged = std::max(Acknowledged, ReadSlot(text.substr(at, SlotSize)));
}

void Seal::Note(std::int64_t changes) {
    if (!Slots->IsOpen() || Acknowledged >= changes) return;
    const std::string slot = Slot(changes);
    if (pwrite(Slots->Get(), slot.data(), slot.size(), PlaceOf(changes)) == static_cast<ssize_t>(slot.size()))
        Acknowledged = changes;
    else
        spdlog::warn("store: {}: {}", Name.string(), std::generic_category().message(errno));
}

void Seal::Keep(std::int64_t changes) {
    if (!Acknowledged) Create(changes);
    Note(changes);
    Sync();
}

void Seal::Sync() const {
    if (fdatasync(Slots->Get()) != 0) Raise(Name);
}

// A seal that exists is whole: it takes its name when it is on disk.
void Seal::Create(std::int64_t changes) {
    const std::filesystem::path part = Name.string() + ".part";
    Descriptor file(open(part.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    const std::string slots = Slot(changes) + Slot(changes);
    if (!file.IsOpen() || pwrite(file.Get(), slots.data(), slots.size(), 0) != static_cast<ssize_t>(slots.size()) ||
        fsync(file.Get()) != 0 || rename(part.c_str(), Name.c_str()) != 0)
        Raise(part);
    SyncDirectory(Name.parent_path());
    Slots.emplace(std::move(file));
    Present = true;
    Acknowledged = changes;
}

}  // namespace ZorvicUnit
