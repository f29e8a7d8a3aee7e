#pragma once

#include <atomic>
#include <chrono>

namespace ZorvicUnit {

/// When to give up reading a media file.
struct ReadLimit {
    std::chrono::steady_clock::time_point Deadline = std::chrono::steady_clock::time_point::max();
    const std::atomic<bool>* Stop = nullptr;  ///< may be null; reading ends soon after it turns true

    static ReadLimit Within(std::chrono::milliseconds time) {
        return {std::chrono::steady_clock::now() + time, nullptr};
    }
    bool Stopped() const { return Stop != nullptr && Stop->load(); }
    bool Reached() const { return Stopped() || std::chrono::steady_clock::now() >= Deadline; }
};

}  // namespace ZorvicUnit
