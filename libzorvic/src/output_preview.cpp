#include "channel.h"
#include "diagnostics.h"
#include "hidden.h"
#include "server_stream.h"
#include "wire.h"

#include <zorvic/preview.h>

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <stop_token>
#include <thread>
#include <utility>

namespace Zorvic {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr milliseconds ConnectLimit(2000);
// Pictures come every 200 ms, and something every second even when there is none.
constexpr milliseconds Silence(2500);
constexpr milliseconds FirstPause(250);
constexpr milliseconds LongestPause(8000);
constexpr std::uint32_t LongestSide = 4096;

bool IsWhole(const Internal::Wire::PreviewFrame& frame) {
    return frame.width() > 0 && frame.height() > 0 && frame.width() <= LongestSide && frame.height() <= LongestSide &&
           frame.rgb().size() == std::size_t{3} * frame.width() * frame.height();
}

}  // namespace

struct ZORVIC_HIDDEN OutputPreview::Impl {
    explicit Impl(std::string host)
        : Host(std::move(host)), Thread([this](const std::stop_token& stop) { Run(stop); }) {}

    void Run(const std::stop_token& stop);
    void Follow(const std::stop_token& stop);
    void Take(const Internal::Wire::PreviewFrame& frame, bool first);

    struct Shown {
        OutputPicture Picture;
        steady_clock::time_point At;
    };

    const std::string Host;
    milliseconds Pause = FirstPause;  ///< of the thread only

    mutable std::mutex Lock;  ///< guards all below
    std::condition_variable_any Changed;
    std::map<std::uint32_t, Shown> Pictures;

    std::jthread Thread;  // last, it uses all of the above
};

void OutputPreview::Impl::Run(const std::stop_token& stop) {
    Internal::NameThread("zorvic-preview");
    while (!stop.stop_requested()) {
        try {
            Follow(stop);
        } catch (const std::exception& error) {  // whatever the unit sent, it costs pictures and nothing more
            if (!stop.stop_requested()) Internal::Note(Host, error.what());
        }
        std::unique_lock lock(Lock);
        Changed.wait_for(lock, stop, Pause, [] { return false; });
        Pause = std::min(2 * Pause, LongestPause);
    }
}

void OutputPreview::Impl::Follow(const std::stop_token& stop) {
    const auto stub = Internal::Wire::Unit::NewStub(Internal::OpenChannel(Host, ConnectLimit));
    Internal::ServerStream<Internal::Wire::PreviewFrame> stream(
        [&](auto* context, auto* queue, void* tag) { return stub->AsyncWatchPreview(context, {}, queue, tag); });
    const std::stop_callback cancel(stop, [&stream] { stream.Cancel(); });
    stream.Start(ConnectLimit);
    for (bool first = true;;) {
        const auto& frame = stream.Read(Silence);
        Pause = FirstPause;
        if (frame.output() != 0) Take(frame, std::exchange(first, false));
    }
}

void OutputPreview::Impl::Take(const Internal::Wire::PreviewFrame& frame, bool first) {
    const auto at = steady_clock::now() - milliseconds(frame.age_ms());
    if (frame.unchanged()) {
        const std::scoped_lock lock(Lock);
        const auto known = Pictures.find(frame.output());
        if (known != Pictures.end()) known->second.At = at;
        return;
    }
    if (!IsWhole(frame)) return Internal::Note(Host, "not a picture of an output");
    const OutputPicture picture{
        .Output = frame.output(),
        .Width = static_cast<int>(frame.width()),
        .Height = static_cast<int>(frame.height()),
        .RGB = std::make_shared<const std::vector<std::uint8_t>>(frame.rgb().begin(), frame.rgb().end()),
        .Signal = frame.signal()};
    const std::scoped_lock lock(Lock);
    // The unit may have come back with other outputs.
    if (first) Pictures.clear();
    Pictures[frame.output()] = {picture, at};
}

OutputPreview::OutputPreview(const std::string& host) : Pimpl(std::make_unique<Impl>(host)) {}

OutputPreview::~OutputPreview() = default;

std::vector<OutputPicture> OutputPreview::Latest() const {
    const std::scoped_lock lock(Pimpl->Lock);
    std::vector<OutputPicture> pictures;
    const auto now = steady_clock::now();
    for (const auto& [output, shown] : Pimpl->Pictures) {
        pictures.push_back(shown.Picture);
        pictures.back().Age = std::chrono::duration_cast<milliseconds>(now - shown.At);
    }
    return pictures;
}

}  // namespace Zorvic
