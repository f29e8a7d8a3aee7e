#pragma once

#include <filesystem>
#include <string>

namespace ZorvicUnit {

/// A directory that lives as long as the object.
class TempDirectory {
public:
    TempDirectory();
    ~TempDirectory();
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;
    std::filesystem::path operator/(const std::string& name) const { return Path / name; }

    const std::filesystem::path Path;
};

void WriteFile(const std::filesystem::path& file, const std::string& bytes);
std::string ReadFile(const std::filesystem::path& file);

/// Runs the ffmpeg program with these arguments (a shell's words) and the file as its output. False when this ffmpeg
/// lacks an encoder; any other failure throws.
bool Encode(const std::string& arguments, const std::filesystem::path& file);

/// One second of a 1 kHz tone as a WAV file of 48 kHz, 16 bits, for tests that need any small asset. Another variant
/// gives other bytes.
std::string ToneFile(int variant = 0);

}  // namespace ZorvicUnit
