#include "discovery_names.h"

#include <utility>

namespace Zorvic::Internal {

std::optional<std::string> AnnouncedNames::Add(const std::string& name) {
    const auto [added, isNew] = Names.try_emplace(name);
    if (!isNew) return std::nullopt;
    added->second.Number = ++Last;
    if (Names.size() <= Most) return std::nullopt;
    std::map<std::string, std::size_t> counts;
    for (const auto& [text, known] : Names)
        ++counts[known.Address];
    const auto goesBefore = [&](const Name& one, const Name& other) {
        if (one.Address != other.Address) return counts[one.Address] > counts[other.Address];
        return one.Address.empty() ? one.Number < other.Number : one.Number > other.Number;
    };
    auto first = added;
    for (auto item = Names.begin(); item != Names.end(); ++item)
        if (goesBefore(item->second, first->second)) first = item;
    std::string leaves = first->first;
    Names.erase(first);
    return leaves;
}

void AnnouncedNames::SetPlace(const std::string& name, const std::string& address) {
    const auto found = Names.find(name);
    if (found != Names.end()) found->second.Address = address;
}

}  // namespace Zorvic::Internal
