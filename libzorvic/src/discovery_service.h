#pragma once

#include "discovery_browser.h"
#include "discovery_prober.h"
#include "discovery_tracker.h"

#include <zorvic/types.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace Zorvic::Internal {

/// Keeps the list of units that answer while somebody asks for it.
class DiscoveryService final : ServiceListener {
public:
    using BrowserMaker = std::function<std::unique_ptr<ServiceBrowser>(ServiceListener&)>;

    /// Searches from the first Units() on and rests when `rest` has passed since the last one.
    DiscoveryService(BrowserMaker makeBrowser, std::unique_ptr<UnitProber> prober, std::chrono::milliseconds rest);
    ~DiscoveryService() override;

    /// A copy of the list; never waits for the network. Any thread.
    std::vector<LANZorvic> Units();

private:
    using Guard = std::unique_lock<std::mutex>;
    using Clock = std::chrono::steady_clock;

    void OnAnnounced(const AnnouncedUnit& announced) override;
    void OnWithdrawn(const std::string& key) override;

    void Run(const std::stop_token& stop);
    std::unique_ptr<ServiceBrowser> StartBrowser();
    void Browse(const std::stop_token& stop, Guard& guard);
    void AskDue(Guard& guard);
    Clock::time_point NextWake() const;

    const BrowserMaker MakeBrowser;
    const std::chrono::milliseconds Rest;
    bool FailureTold = false;  ///< touched by Worker only

    std::mutex Lock;  ///< guards Tracker, Wanted and Changed; never held while browser or prober are called
    std::condition_variable_any Wake;
    UnitTracker Tracker;
    Clock::time_point Wanted;  ///< until when to search
    bool Changed = false;      ///< something may be due earlier than the worker's next wake

    // Stopped in this order: the worker (and with it the browser), then the prober, whose answers use what is above.
    std::unique_ptr<UnitProber> Prober;
    std::jthread Worker;
};

}  // namespace Zorvic::Internal
