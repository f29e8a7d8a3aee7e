#include "model/request_memory.h"

namespace ZorvicUnit {

std::optional<RequestMemory::Outcome> RequestMemory::Find(std::uint64_t key) const {
    const auto found = Outcomes.find(key);
    return found == Outcomes.end() ? std::nullopt : std::optional(found->second);
}

void RequestMemory::Add(std::uint64_t key, Outcome outcome) {
    if (key == 0 || !Outcomes.emplace(key, outcome).second) return;
    Keys.push_back(key);
    if (Keys.size() <= MaxKeys) return;
    Outcomes.erase(Keys.front());
    Keys.pop_front();
}

}  // namespace ZorvicUnit
