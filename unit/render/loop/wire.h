#pragma once

#include "render/message_pipe.h"
#include "render/scene.h"

#include <render.pb.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace ZorvicRender {

/// The renderer's end of the pipe to the unit: takes outlooks as they come, and sends without ever waiting.
class Wire {
public:
    explicit Wire(ZorvicUnit::Descriptor socket);
    ~Wire();

    /// The first message; false when there is none.
    bool ReceiveSetup(zorvic::render::Setup& setup);
    /// From here on `arrived` is called with each new scene, from the receiving thread.
    void Begin(std::function<void(std::shared_ptr<const Scene>)> arrived);

    /// What plays by the latest outlook; never null.
    std::shared_ptr<const Scene> Latest() const;
    /// Returns when a newer scene than this came, when the unit is gone, or at that time.
    void WaitForNewer(const std::shared_ptr<const Scene>& than, TimePoint until);
    bool UnitIsGone() const { return Gone; }
    bool PreviewWanted() const { return Preview; }

    void Send(zorvic::render::FromRenderer message);
    /// For what is of no use later: not sent while the unit does not read.
    void SendIfRoom(zorvic::render::FromRenderer message) { SendIfFewerWait(8, std::move(message)); }
    /// As SendIfRoom, and leaves room for what the unit needs more.
    void SendPicture(zorvic::render::FromRenderer message) { SendIfFewerWait(4, std::move(message)); }
    /// Returns when all was sent, or after a second.
    void Flush();

private:
    void SendIfFewerWait(std::size_t count, zorvic::render::FromRenderer message);
    void Receive();
    void SendAll();

    MessagePipe Pipe;
    std::atomic<bool> Gone = false;
    std::atomic<bool> Preview = false;
    std::function<void(std::shared_ptr<const Scene>)> Arrived;

    mutable std::mutex Lock;  ///< guards all below
    std::condition_variable Changed;
    std::shared_ptr<const Scene> Current = std::make_shared<const Scene>();
    std::deque<zorvic::render::FromRenderer> Outgoing;
    bool Stop = false;

    std::thread Sender;
    std::thread Receiver;
};

}  // namespace ZorvicRender
