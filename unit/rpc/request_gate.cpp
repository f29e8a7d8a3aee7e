#include "rpc/request_gate.h"

namespace ZorvicUnit {

RequestGate::Pass::Pass(RequestGate& gate) : Gate(gate) {
    const std::scoped_lock lock(Gate.Mutex);
    Entered = !Gate.Closed;
    if (Entered) ++Gate.Inside;
}

RequestGate::Pass::~Pass() {
    if (!Entered) return;
    const std::scoped_lock lock(Gate.Mutex);
    --Gate.Inside;
    Gate.Left.notify_all();
}

void RequestGate::Close(std::chrono::milliseconds limit) {
    std::unique_lock lock(Mutex);
    Closed = true;
    Left.wait_for(lock, limit, [this] { return Inside == 0; });
}

}  // namespace ZorvicUnit
