#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ZorvicRender {

class Track;

/// Ends what is no longer heard in a thread of its own: a reader may still wait for a disk.
class Reaper {
public:
    Reaper();
    ~Reaper();
    Reaper(const Reaper&) = delete;
    Reaper& operator=(const Reaper&) = delete;

    void Take(std::unique_ptr<Track> track);

private:
    void Run();

    std::mutex Lock;  ///< guards Dying and Stop
    std::condition_variable Changed;
    std::vector<std::unique_ptr<Track>> Dying;
    bool Stop = false;
    std::thread Thread;
};

}  // namespace ZorvicRender
