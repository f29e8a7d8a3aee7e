#pragma once

#include "files/descriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace ZorvicUnit {

/// The file beside the database that says how many changes have been acknowledged, so that a database which has lost
/// some, or is gone, is told from a complete or a new one. Written after a commit and synchronised later: it never
/// claims more than the database holds, and a process that is killed leaves it complete. Only a power cut may leave it
/// behind.
class Seal {
public:
    /// Reads the file; does not make it.
    explicit Seal(std::filesystem::path file);

    /// Whether the store has been used, even when what the seal said cannot be read any more.
    bool Exists() const { return Present; }
    /// Nothing when there is no seal that can be read.
    std::optional<std::int64_t> Changes() const { return Acknowledged; }
    const std::filesystem::path& File() const { return Name; }

    /// Takes note of a commit, without waiting for the disk. Logs when it cannot.
    void Note(std::int64_t changes);
    /// Brings it to disk; makes the file when it is not there. Throws Fault.
    void Keep(std::int64_t changes);
    /// Brings what was noted to disk, also while another thread notes the next commit. Throws Fault.
    void Sync() const;

private:
    void Create(std::int64_t changes);

    const std::filesystem::path Name;
    bool Present = false;
    std::optional<std::int64_t> Acknowledged;
    std::optional<Descriptor> Slots;
};

}  // namespace ZorvicUnit
