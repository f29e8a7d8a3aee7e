#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace ZorvicUnit {

/// Copies a file of `size` bytes to a new one and brings it to disk; gives the checksum of what was copied. Slowly
/// enough for others: the system's memory is not filled with it, and it is written as it goes. Calls `progress` with
/// the bytes done after every piece (256 KiB). On failure the target may be there, unfinished. Throws Fault: DiskFull
/// (known beforehand where the file system can tell), NotFound, Internal, Slow (stop turned true), and what `progress`
/// throws.
std::string CopyToDisk(const std::filesystem::path& source, const std::filesystem::path& target, std::int64_t size,
                       const std::atomic<bool>& stop, const std::function<void(std::int64_t)>& progress);

/// Brings what a file holds to disk. Throws Fault DiskFull or Internal.
void SyncFile(const std::filesystem::path& file);

/// Makes a directory and those above it; what was made survives a power cut. Throws Internal.
void MakeDirectories(const std::filesystem::path& directory);

/// Makes what was renamed or removed in a directory survive a power cut. Throws Internal.
void SyncDirectory(const std::filesystem::path& directory);

}  // namespace ZorvicUnit
