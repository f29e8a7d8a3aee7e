#include "model/request_memory.h"

namespace ZorvicUnit {

std::optional<std::uint64_t> RequestMemory::Find(std::uint64_t key) const {
    const auto found = Revisions.find(key);
    return found == Revisions.end() ? std::nullopt : std::optional(found->second);
}

void RequestMemory::Add(std::uint64_t key, std::uint64_t revision) {
    if (key == 0 || !Revisions.emplace(key, revision).second) return;
    Keys.push_back(key);
    if (Keys.size() <= MaxKeys) return;
    Revisions.erase(Keys.front());
    Keys.pop_front();
}

}  // namespace ZorvicUnit
