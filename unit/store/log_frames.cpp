#include "store/log_frames.h"

#include <array>
#include <cstdint>
#include <fstream>

namespace ZorvicUnit {

namespace {

// The file format: a header, then frames of a header and a page each. Numbers are big-endian.
constexpr std::int64_t FileHeader = 32;
constexpr std::int64_t FrameHeader = 24;
constexpr std::size_t PageSizeAt = 8;
constexpr std::size_t SaltsAt = 8;  ///< of a frame
constexpr std::int64_t UsualPageSize = 4096;

template <std::size_t Size>
bool ReadAt(std::ifstream& file, std::int64_t place, std::array<unsigned char, Size>& bytes) {
    file.seekg(place);
    return static_cast<bool>(file.read(reinterpret_cast<char*>(bytes.data()), Size));
}

std::uint64_t Number(const unsigned char* bytes, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size; ++i)
        number = number << 8U | bytes[i];
    return number;
}

// The page size as the log's header says, unless that is damaged too.
std::int64_t PageSize(const std::array<unsigned char, FileHeader>& header) {
    const auto size = static_cast<std::int64_t>(Number(header.data() + PageSizeAt, 4));
    const bool valid = size >= 512 && size <= 65536 && (size & (size - 1)) == 0;
    return valid ? size : UsualPageSize;
}

}  // namespace

std::int64_t FramesInLog(const std::filesystem::path& log) {
    std::ifstream file(log, std::ios::binary);
    std::array<unsigned char, FileHeader> header{};
    std::array<unsigned char, FrameHeader> frame{};
    if (!ReadAt(file, 0, header) || !ReadAt(file, FileHeader, frame)) return 0;
    // All frames of one filling carry the salts of the first; those of an earlier filling may stand behind them.
    const std::uint64_t salts = Number(frame.data() + SaltsAt, 8);
    const std::int64_t stride = FrameHeader + PageSize(header);
    std::int64_t last = 0;
    for (std::int64_t number = 1; ReadAt(file, FileHeader + (number - 1) * stride, frame); ++number)
        if (Number(frame.data() + SaltsAt, 8) == salts) last = number;
    return last;
}

}  // namespace ZorvicUnit
