#pragma once

#include "support/childprocess.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace ZorvicUnit {

void WriteFile(const std::filesystem::path& file, const std::string& bytes);

/// Runs the ffmpeg program with these arguments (a shell's words) and the file as its output. False when this ffmpeg
/// lacks an encoder; any other failure throws.
bool Encode(const std::string& arguments, const std::filesystem::path& file);

/// The 44 bytes before the samples of a WAV file of 48 kHz, 16 bits, one channel.
std::string WaveHead(std::uint32_t dataBytes);

/// One second of a 1 kHz tone as a WAV file of 48 kHz, 16 bits, for tests that need any small asset. Another variant
/// gives other bytes.
std::string ToneFile(int variant = 0);

}  // namespace ZorvicUnit
