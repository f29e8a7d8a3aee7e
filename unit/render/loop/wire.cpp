#include "render/loop/wire.h"

#include "thread_name.h"

#include <utility>

namespace ZorvicRender {

Wire::Wire(ZorvicUnit::Descriptor socket) : Pipe(std::move(socket)), Sender([this] { SendAll(); }) {}

Wire::~Wire() {
    {
        const std::scoped_lock lock(Lock);
        Stop = true;
        Changed.notify_all();
    }
    Pipe.Shutdown();
    Sender.join();
    if (Receiver.joinable()) Receiver.join();
}

bool Wire::ReceiveSetup(zorvic::render::Setup& setup) {
    zorvic::render::ToRenderer message;
    if (!Pipe.Receive(message) || !message.has_setup()) return false;
    setup = message.setup();
    return true;
}

void Wire::Begin(std::function<void(std::shared_ptr<const Scene>)> arrived) {
    Arrived = std::move(arrived);
    Receiver = std::thread([this] { Receive(); });
}

std::shared_ptr<const Scene> Wire::Latest() const {
    const std::scoped_lock lock(Lock);
    return Current;
}

void Wire::WaitForNewer(const std::shared_ptr<const Scene>& than, TimePoint until) {
    std::unique_lock lock(Lock);
    Changed.wait_until(lock, until, [&] { return Current != than || Gone; });
}

void Wire::Send(zorvic::render::FromRenderer message) {
    const std::scoped_lock lock(Lock);
    Outgoing.push_back(std::move(message));
    Changed.notify_all();
}

void Wire::SendIfFewerWait(std::size_t count, zorvic::render::FromRenderer message) {
    const std::scoped_lock lock(Lock);
    if (Outgoing.size() >= count) return;
    Outgoing.push_back(std::move(message));
    Changed.notify_all();
}

void Wire::Flush() {
    std::unique_lock lock(Lock);
    Changed.wait_for(lock, std::chrono::seconds(1), [this] { return Outgoing.empty() || Gone; });
}

void Wire::Receive() {
    ZorvicUnit::NameThread("zr-wire");
    const auto opening = [this](const std::string& path, bool done) {
        zorvic::render::FromRenderer report;
        report.mutable_opening()->set_path(path);
        report.mutable_opening()->set_done(done);
        Send(std::move(report));
    };
    for (;;) {
        zorvic::render::ToRenderer message;
        if (!Pipe.Receive(message)) break;
        if (message.has_preview()) Preview = message.preview().wanted();
        if (!message.has_outlook()) continue;
        auto scene = std::make_shared<const Scene>(NextScene(*Latest(), message.outlook(), opening));
        Arrived(scene);
        const std::scoped_lock lock(Lock);
        Current = std::move(scene);
        Changed.notify_all();
    }
    const std::scoped_lock lock(Lock);
    Gone = true;
    Changed.notify_all();
}

void Wire::SendAll() {
    ZorvicUnit::NameThread("zr-send");
    std::unique_lock lock(Lock);
    for (;;) {
        Changed.wait(lock, [this] { return Stop || !Outgoing.empty(); });
        if (Stop) return;
        const auto message = Outgoing.front();
        lock.unlock();
        const bool sent = Pipe.Send(message);
        lock.lock();
        Outgoing.pop_front();
        Changed.notify_all();
        if (sent) continue;
        Gone = true;
        return;
    }
}

}  // namespace ZorvicRender
