#include "discovery_service.h"

#include "diagnostics.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace Zorvic::Internal {
namespace {

constexpr std::chrono::seconds RetryPause{10};

}  // namespace

DiscoveryService::DiscoveryService(BrowserMaker makeBrowser, std::unique_ptr<UnitProber> prober,
                                   std::chrono::milliseconds rest)
    : MakeBrowser(std::move(makeBrowser)),
      Rest(rest),
      Prober(std::move(prober)),
      Worker([this](const std::stop_token& stop) { Run(stop); }) {}

DiscoveryService::~DiscoveryService() = default;

std::vector<LANZorvic> DiscoveryService::Units() {
    const std::scoped_lock lock(Lock);
    Wanted = Clock::now() + Rest;
    Wake.notify_all();
    return Tracker.Units();
}

void DiscoveryService::OnAnnounced(const AnnouncedUnit& announced) {
    const std::scoped_lock lock(Lock);
    Tracker.Announce(announced, Clock::now());
    Changed = true;
    Wake.notify_all();
}

void DiscoveryService::OnWithdrawn(const std::string& key) {
    const std::scoped_lock lock(Lock);
    Tracker.Withdraw(key);
}

void DiscoveryService::Run(const std::stop_token& stop) {
    NameThread("zorvic-discover");
    Guard guard(Lock);
    while (Wake.wait(guard, stop, [this] { return Clock::now() < Wanted; }) && !stop.stop_requested()) {
        guard.unlock();
        auto browser = StartBrowser();
        guard.lock();
        if (browser) {
            Browse(stop, guard);
        } else {
            Wake.wait_for(guard, stop, RetryPause, [] { return false; });
        }
        guard.unlock();
        browser.reset();
        guard.lock();
        Tracker.Clear();
    }
}

std::unique_ptr<ServiceBrowser> DiscoveryService::StartBrowser() {
    try {
        return MakeBrowser(*this);
    } catch (const std::runtime_error& error) {
        if (!std::exchange(FailureTold, true)) {
            std::cerr << std::string("libzorvic: the network cannot be searched for units: ") + error.what() + '\n';
        }
        return nullptr;
    }
}

void DiscoveryService::Browse(const std::stop_token& stop, Guard& guard) {
    while (!stop.stop_requested() && Clock::now() < Wanted) {
        AskDue(guard);
        Wake.wait_until(guard, stop, NextWake(), [this] { return Changed; });
        Changed = false;
    }
}

void DiscoveryService::AskDue(Guard& guard) {
    const auto questions = Tracker.TakeDue(Clock::now());
    guard.unlock();
    for (const auto& question : questions) {
        Prober->Ask(question.Host, [this, id = question.ID](const std::optional<LANZorvic>& answer) {
            const std::scoped_lock lock(Lock);
            Tracker.Answer(id, answer, Clock::now());
            Changed = true;
            Wake.notify_all();
        });
    }
    guard.lock();
}

DiscoveryService::Clock::time_point DiscoveryService::NextWake() const {
    return std::min(Tracker.NextDue().value_or(Wanted), Wanted);
}

}  // namespace Zorvic::Internal
