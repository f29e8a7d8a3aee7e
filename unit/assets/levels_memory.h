#pragma once

#include "asset_catalog.h"

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// The levels of the assets that were asked for lately; the cache on disk has all. One thread at a time.
class LevelsMemory {
public:
    /// Those of some two hundred hours.
    static constexpr std::size_t MostBytes = std::size_t{32} << 20U;

    explicit LevelsMemory(std::size_t mostBytes = MostBytes) : Most(mostBytes) {}

    /// Gives the paths whose levels had to go for these.
    std::vector<std::string> Put(const std::string& path, std::shared_ptr<const Envelope> levels);
    /// Null when they are not here.
    std::shared_ptr<const Envelope> Get(const std::string& path);
    void Remove(const std::string& path);

private:
    struct Entry {
        std::shared_ptr<const Envelope> Levels;
        std::list<std::string>::iterator Place;
    };
    void Drop(std::map<std::string, Entry>::iterator entry);

    const std::size_t Most;
    std::size_t Bytes = 0;
    std::list<std::string> Latest;  ///< first
    std::map<std::string, Entry> Entries;
};

}  // namespace ZorvicUnit
