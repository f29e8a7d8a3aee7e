#pragma once

#include <filesystem>
#include <functional>
#include <random>

/// Follows what this process does to the files of one directory, and tells what a power cut at any moment may have left
/// of it. Linked into a test, it takes the place of the system's calls, and waits for no disk. One at a time.
class DiskRecord {
public:
    explicit DiskRecord(const std::filesystem::path& directory);
    ~DiskRecord();
    DiskRecord(const DiskRecord&) = delete;
    DiskRecord& operator=(const DiskRecord&) = delete;

    /// How many steps were taken so far: writes, changes of a size or a name, synchronisations.
    std::size_t Steps() const;
    /// Makes in `target` what may be there when the power goes after so many steps. What was synchronised is; of each
    /// later write any of its sectors, some of them torn; of the names' changes those before a drawn one.
    void Leave(std::size_t steps, std::mt19937& draw, const std::filesystem::path& target) const;
    /// That step from now on, and no other, fails with an I/O error; 0: none.
    void Fail(int step);
    bool HasFailed() const;

    /// What a thread does before it synchronises a file.
    static inline thread_local std::function<void()> BeforeSync;
};
