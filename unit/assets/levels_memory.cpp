#include "assets/levels_memory.h"

#include <utility>

namespace ZorvicUnit {

namespace {

std::size_t SizeOf(const Envelope& levels) {
    return levels.Levels.size() * sizeof(levels.Levels[0]);
}

}  // namespace

std::vector<std::string> LevelsMemory::Put(const std::string& path, std::shared_ptr<const Envelope> levels) {
    Remove(path);
    if (levels == nullptr) return {};
    Bytes += SizeOf(*levels);
    Latest.push_front(path);
    Entries[path] = {std::move(levels), Latest.begin()};
    std::vector<std::string> gone;
    while (Bytes > Most && Latest.size() > 1) {
        gone.push_back(Latest.back());
        Drop(Entries.find(Latest.back()));
    }
    return gone;
}

std::shared_ptr<const Envelope> LevelsMemory::Get(const std::string& path) {
    const auto found = Entries.find(path);
    if (found == Entries.end()) return nullptr;
    Latest.splice(Latest.begin(), Latest, found->second.Place);
    return found->second.Levels;
}

void LevelsMemory::Remove(const std::string& path) {
    if (const auto found = Entries.find(path); found != Entries.end()) Drop(found);
}

void LevelsMemory::Drop(std::map<std::string, Entry>::iterator entry) {
    Bytes -= SizeOf(*entry->second.Levels);
    Latest.erase(entry->second.Place);
    Entries.erase(entry);
}

}  // namespace ZorvicUnit
