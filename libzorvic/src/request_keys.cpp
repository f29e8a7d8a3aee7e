#include "request_keys.h"

#include <algorithm>
#include <random>

namespace Zorvic::Internal {
namespace {

std::uint64_t NewKey() {
    std::random_device random;
    // 0 is no key on the wire.
    return std::uniform_int_distribution<std::uint64_t>(1)(random);
}

}  // namespace

std::uint64_t RequestKeys::KeyOf(const std::string& content, TimePoint now) const {
    const auto same = [&](const Request& open) { return open.Content == content && now - open.Since < Memory; };
    const auto found = std::find_if(Open.begin(), Open.end(), same);
    return found == Open.end() ? NewKey() : found->Key;
}

void RequestKeys::Unanswered(const std::string& content, std::uint64_t key, TimePoint now) {
    Answered(key);
    Open.push_back({content, key, now});
    if (Open.size() > MostOpen) Open.pop_front();
}

void RequestKeys::Answered(std::uint64_t key) {
    std::erase_if(Open, [&](const Request& open) { return open.Key == key; });
}

}  // namespace Zorvic::Internal
