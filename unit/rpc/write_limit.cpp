#include "rpc/write_limit.h"

#include "thread_name.h"

namespace ZorvicUnit {

using std::chrono::steady_clock;

// The thread is not woken: it looks often enough, and most writes last no longer than a moment.
WriteLimit::Pending::Pending(WriteLimit& limit, grpc::ServerContext& context) : Owner(limit) {
    const std::scoped_lock lock(Owner.Lock);
    Place = Owner.Writes.insert(Owner.Writes.end(), {steady_clock::now(), &context});
}

WriteLimit::Pending::~Pending() {
    const std::scoped_lock lock(Owner.Lock);
    Owner.Writes.erase(Place);
}

void WriteLimit::Run(const std::stop_token& stop) {
    NameThread("write-limit");
    std::unique_lock lock(Lock);
    while (!stop.stop_requested()) {
        Wake.wait_for(lock, stop, Longest / 4, [] { return false; });
        const auto now = steady_clock::now();
        for (const auto& [since, context] : Writes) {
            if (now - since < Longest) break;
            context->TryCancel();
        }
    }
}

}  // namespace ZorvicUnit
