#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace ZorvicUnit {

/// Counts the requests that are being carried out, so that the unit ends between two of them and not within one. Safe
/// to use from several threads.
class RequestGate {
public:
    /// One request; lives while it is carried out.
    class Pass {
    public:
        explicit Pass(RequestGate& gate);
        ~Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        /// False when the gate is closed: the request must be turned away.
        bool Granted() const { return Entered; }

    private:
        RequestGate& Gate;
        bool Entered;
    };

    /// Lets no more requests in and waits for those inside, no longer than the limit.
    void Close(std::chrono::milliseconds limit);

private:
    std::mutex Mutex;  ///< guards the rest
    std::condition_variable Left;
    int Inside = 0;
    bool Closed = false;
};

}  // namespace ZorvicUnit
