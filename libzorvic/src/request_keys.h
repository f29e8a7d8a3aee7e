#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace Zorvic::Internal {

/// The keys of requests that would do harm when they are carried out twice. A request that got no answer may have been
/// carried out, and its caller, who was told that it failed, will try again: the repetition gets the key of the first
/// one, so that the unit knows it. One thread at a time.
class RequestKeys {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    /// For how long the same content counts as the same request: an operator who tries again does so at once; one who
    /// comes back later wants a second one.
    static constexpr std::chrono::seconds Memory{60};

    std::uint64_t KeyOf(const std::string& content, TimePoint now) const;
    void Unanswered(const std::string& content, std::uint64_t key, TimePoint now);
    void Answered(std::uint64_t key);

private:
    static constexpr std::size_t MostOpen = 32;

    struct Request {
        std::string Content;
        std::uint64_t Key;
        TimePoint Since;
    };
    std::deque<Request> Open;  // without an answer, oldest first
};

}  // namespace Zorvic::Internal
