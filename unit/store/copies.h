#pragma once

#include <cstdint>
#include <filesystem>
#include <utility>
#include <vector>

namespace ZorvicUnit {

/// Copies of the database beside it, the newest with the lowest number. Each is complete without a log, and was whole
/// when it took its place: damage that the database has meanwhile does not get into them.
class Copies {
public:
    static constexpr int Kept = 3;

    explicit Copies(std::filesystem::path database) : Database(std::move(database)) {}

    /// Makes the newest copy from what is on disk, without holding anybody up that writes. Throws Fault, with the
    /// copies as they were, StoreDamage when the database is damaged.
    void Make() const;
    /// Changes that the newest one holds; -1 when there is none that can be read.
    std::int64_t Changes() const;
    /// Gives all of them names that no later copy takes, and tells old and new ones.
    std::vector<std::pair<std::filesystem::path, std::filesystem::path>> SetAside() const;
    /// Those that there are, newest first, whole or not.
    std::vector<std::filesystem::path> Files() const;

private:
    std::filesystem::path Numbered(int number) const;

    const std::filesystem::path Database;
};

}  // namespace ZorvicUnit
