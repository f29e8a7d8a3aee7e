#include "unit/media_samples.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <stdexcept>

namespace ZorvicUnit {

namespace {

constexpr std::uint32_t Rate = 48000;

void Append(std::string& bytes, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
}

}  // namespace

void WriteFile(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool Encode(const std::string& arguments, const std::filesystem::path& file) {
    const std::filesystem::path log = file.parent_path() / "encode.log";
    const std::string command =
        "ffmpeg -nostdin -y -v error " + arguments + " '" + file.string() + "' 2> '" + log.string() + "'";
    const int status = std::system(command.c_str());
    const std::string messages = ReadFile(log);
    std::filesystem::remove(log);
    if (status == 0) return true;
    std::filesystem::remove(file);
    if (messages.find("Unknown encoder") != std::string::npos) return false;
    throw std::runtime_error(command + ": " + messages);
}

std::string WaveHead(std::uint32_t dataBytes) {
    std::string file = "RIFF";
    Append(file, 36 + dataBytes, 4);
    file += "WAVEfmt ";
    Append(file, 16, 4);
    Append(file, 1, 2);
    Append(file, 1, 2);
    Append(file, Rate, 4);
    Append(file, Rate * 2, 4);
    Append(file, 2, 2);
    Append(file, 16, 2);
    file += "data";
    Append(file, dataBytes, 4);
    return file;
}

std::string ToneFile(int variant) {
    std::string samples;
    for (std::uint32_t i = 0; i < Rate; ++i) {
        const double phase = 2 * std::numbers::pi * 1000 * i / Rate;
        Append(samples, static_cast<std::uint32_t>(std::lround(16384 * std::sin(phase)) + variant), 2);
    }
    return WaveHead(static_cast<std::uint32_t>(samples.size())) + samples;
}

}  // namespace ZorvicUnit
