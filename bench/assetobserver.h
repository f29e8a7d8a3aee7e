#pragma once

#include <zorvic/zorvic.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

using SteadyTime = std::chrono::steady_clock::time_point;

inline double MillisecondsSince(SteadyTime begin) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

/// The value that `share` of the values do not exceed.
inline double Percentile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

/// A client of its own that follows a unit's asset list as its notifications come in.
class AssetObserver {
public:
    explicit AssetObserver(const std::string& host) : Client(host, 1) {
        Client.SetStateEventCallback(Zorvic::ZORVIC_STATE_ASSETS, &AssetObserver::Notice, this);
    }
    ~AssetObserver() { Client.SetStateEventCallback(Zorvic::ZORVIC_STATE_ASSETS, nullptr, nullptr); }
    AssetObserver(const AssetObserver&) = delete;
    AssetObserver& operator=(const AssetObserver&) = delete;

    Zorvic::Session& Session() { return Client; }

    /// Waits until the condition holds for the list, asked at every notification; false when it took longer.
    template <typename Condition>
    bool WaitFor(Condition condition, std::chrono::seconds limit = std::chrono::seconds(300)) {
        const auto end = std::chrono::steady_clock::now() + limit;
        std::vector<Zorvic::Asset> assets;
        while (Client.GetAssets(assets) != Zorvic::ZORVIC_STATUS_OK || !condition(assets)) {
            std::unique_lock lock(Mutex);
            if (!Changed.wait_until(lock, end, [this] { return News; })) return false;
            News = false;
        }
        return true;
    }

private:
    static void Notice(Zorvic::StateEventType /*type*/, void* user) {
        auto* self = static_cast<AssetObserver*>(user);
        const std::lock_guard lock(self->Mutex);
        self->News = true;
        self->Changed.notify_all();
    }

    std::mutex Mutex;  // guards News
    std::condition_variable Changed;
    bool News = false;
    Zorvic::Session Client;
};
