#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ZorvicRender {

/// Destroys what must not be destroyed on a thread that is in a hurry: readers are joined here.
class Reaper {
public:
    Reaper();
    ~Reaper();

    template <typename T>
    void Take(std::unique_ptr<T> object) {
        if (object) Add(std::shared_ptr<void>(std::move(object)));
    }

private:
    void Add(std::shared_ptr<void> object);
    void Run(const std::stop_token& stop);

    std::mutex Lock;  ///< guards Dead
    std::condition_variable_any Wake;
    std::vector<std::shared_ptr<void>> Dead;
    std::jthread Thread;
};

}  // namespace ZorvicRender
