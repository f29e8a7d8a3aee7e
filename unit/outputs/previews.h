#pragma once

#include <render.pb.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// The newest small picture of each output, for those who watch. Nothing queues: whoever reads slowly misses pictures.
/// Safe to use from several threads.
class Previews {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Picture {
        std::uint32_t Output = 0;
        std::uint32_t Width = 0;
        std::uint32_t Height = 0;
        std::shared_ptr<const std::string> RGB;  ///< 3 bytes a pixel, rows from the top, no padding
        bool Signal = false;                     ///< something runs on the output
        TimePoint At;                            ///< when the output showed it
        bool Unchanged = false;                  ///< the watcher has the same picture already, only older
    };

    class Watcher;
    // Each holds one of the server's threads.
    static constexpr std::size_t MaxWatchers = 32;

    /// Called when the first watcher comes and when the last one has gone, with the lock held: it must only take note.
    /// Without a listener nobody makes pictures, and nobody can watch.
    void SetListener(std::function<void()> listener);
    bool Wanted() const;
    void Put(zorvic::render::PreviewPicture picture);
    /// Ends all watching, and lets none begin.
    void Close();

private:
    struct Slot {
        Picture Newest;
        std::uint64_t Number = 0;   ///< of the picture, counted over all outputs
        std::uint64_t Content = 0;  ///< number of the first picture that looked like this one
    };

    mutable std::mutex Lock;  ///< guards all below
    std::condition_variable Changed;
    std::function<void()> Listener;
    std::map<std::uint32_t, Slot> Slots;
    std::set<const Watcher*> Watchers;
    std::uint64_t Last = 0;
    bool Closed = false;
};

/// One who watches, on one thread. The previews must outlive it.
class Previews::Watcher {
public:
    /// Throws Fault Refused when the unit has no pictures or too many watchers.
    explicit Watcher(Previews& previews);
    ~Watcher();
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    /// What came since the last call, the newest of each output; waits for it no longer than the limit. Nothing when
    /// watching is over.
    std::optional<std::vector<Picture>> Next(std::chrono::milliseconds limit);

private:
    Previews& Source;
    std::uint64_t Seen = 0;  ///< number of the newest picture that it has
};

}  // namespace ZorvicUnit
