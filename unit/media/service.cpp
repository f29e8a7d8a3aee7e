#include "media/service.h"

#include "fault.h"
#include "media/envelope.h"
#include "media/probe.h"
#include "media/sandbox.h"
#include "media/wire.h"

#include <poll.h>
#include <sys/resource.h>

#include <exception>
#include <new>

namespace ZorvicUnit {

namespace {

using zorvic::media::Answer;
using zorvic::media::Order;

constexpr int IdleMS = 3000;
// Memory that a library loses or leaves in pieces, and time on the processor, are given back.
constexpr int MostOrders = 500;
constexpr int MostSeconds = 60;

bool WaitForOrder(int socket) {
    pollfd event = {socket, POLLIN, 0};
    return poll(&event, 1, IdleMS) > 0;
}

bool HasLivedLong() {
    rusage used = {};
    getrusage(RUSAGE_SELF, &used);
    return used.ru_utime.tv_sec + used.ru_stime.tv_sec > MostSeconds;
}

Answer Refuse(const std::string& reason, bool lasting) {
    Answer answer;
    answer.mutable_refusal()->set_reason(reason);
    answer.mutable_refusal()->set_lasting(lasting);
    return answer;
}

Answer AnswerTo(const Frame& frame, const OrderHandler& handler) {
    Order order;
    if (!order.ParseFromString(frame.Bytes)) return Refuse("an order that cannot be read", false);
    try {
        return handler(order, frame.Passed);
    } catch (const Fault& fault) {
        return Refuse(fault.what(), fault.Kind == FaultKind::Refused);
    } catch (const std::bad_alloc&) {
        return Refuse(order.name() + " needs more memory than a media file may take", true);
    }
}

}  // namespace

Answer CarryOut(const Order& order, const Descriptor& file) {
    Answer answer;
    if (order.kind() == Order::KIND_STREAMS) {
        *answer.mutable_metadata() = Probe(file, order.name(), {});
    } else {
        const auto levels = ReadEnvelope(file, order.name(), {});
        answer.mutable_levels()->set_has_sound(levels.has_value());
        if (levels) answer.mutable_levels()->set_peaks(ToBytes(*levels));
    }
    return answer;
}

void Serve(int socket, const OrderHandler& handler) {
    EnterSandbox();
    Answer greeting;
    greeting.mutable_greeting();
    bool heard = SendFrame(socket, greeting.SerializeAsString());
    for (int orders = 0; heard && orders < MostOrders && !HasLivedLong(); ++orders) {
        const auto frame = ReceiveFrame(socket, true, [socket] { return WaitForOrder(socket); });
        if (!frame) return;
        heard = SendFrame(socket, AnswerTo(*frame, handler).SerializeAsString());
    }
}

}  // namespace ZorvicUnit
