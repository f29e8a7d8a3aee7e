#include "assets/media_reader.h"

#include "files/names.h"
#include "files/regular_file.h"
#include "media/wire.h"

#include <media.pb.h>
#include <poll.h>
#include <spdlog/spdlog.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <utility>

namespace ZorvicUnit {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using zorvic::media::Answer;
using zorvic::media::Order;

// A stop is noticed within this time.
constexpr milliseconds Slice{50};
// A process that closes its socket is about to end.
constexpr milliseconds Grace{500};
constexpr std::chrono::seconds StartLimit{30};
constexpr std::size_t MostText = 1024;
// A strange crash may be the fault of the file before, a kill that of anybody.
constexpr int MostTries = 3;

std::string TextOf(int status) {
    if (status == 0) return "no answer";
    if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
    return "exit status " + std::to_string(WEXITSTATUS(status));
}

[[noreturn]] void Throw(const zorvic::media::Refusal& refusal) {
    const std::string reason = ForLog(refusal.reason().substr(0, MostText));
    if (refusal.lasting()) throw FileFault(FaultKind::Refused, reason, false);
    throw Fault(FaultKind::Internal, reason);
}

}  // namespace

/// Has the process for itself, from its turn to the end of its life.
class MediaReader::Visit {
public:
    Visit(MediaReader& reader, Turn turn, const ReadLimit& limit) : Reader(reader) {
        std::unique_lock lock(Reader.Lock);
        const int urgent = turn == Turn::Next ? 1 : 0;
        const auto mayEnter = [&] { return !Reader.Busy && (urgent == 1 || Reader.Waiting == 0); };
        Reader.Waiting += urgent;
        while (!mayEnter() && !(urgent == 1 ? limit.Reached() : limit.Stopped()))
            Reader.Left.wait_for(lock, Slice, mayEnter);
        Reader.Waiting -= urgent;
        if (!mayEnter()) throw Fault(FaultKind::Slow, "other files were read for too long");
        Reader.Busy = true;
    }
    ~Visit() {
        const std::scoped_lock lock(Reader.Lock);
        Reader.Busy = false;
        Reader.Left.notify_all();
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

private:
    MediaReader& Reader;
};

zorvic::v1::AssetMetadata MediaReader::Probe(const std::filesystem::path& file, const ReadLimit& limit, Turn turn) {
    Order order;
    order.set_kind(Order::KIND_STREAMS);
    Answer answer = Ask(order, file, limit, turn);
    return std::move(*answer.mutable_metadata());
}

std::optional<Envelope> MediaReader::ReadLevels(const std::filesystem::path& file, const ReadLimit& limit) {
    Order order;
    order.set_kind(Order::KIND_LEVELS);
    const Answer answer = Ask(order, file, limit, Turn::Last);
    if (!answer.levels().has_sound()) return std::nullopt;
    return ToEnvelope(answer.levels().peaks());
}

Answer MediaReader::Ask(const Order& order, const std::filesystem::path& file, const ReadLimit& wanted, Turn turn) {
    const Descriptor opened = OpenRegularFile(file);
    Order named = order;
    named.set_name(file.string());
    const auto asked = steady_clock::now();
    const Visit visit(*this, turn, wanted);
    ReadLimit limit = wanted;
    if (turn == Turn::Last && limit.Deadline != steady_clock::time_point::max())
        limit.Deadline += steady_clock::now() - asked;
    for (int tries = 1;; ++tries) {
        const bool fresh = !Ready;
        MakeReady(limit);
        if (auto answer = Exchange(named, opened, limit)) {
            if (answer->has_refusal()) Throw(answer->refusal());
            return *std::move(answer);
        }
        if (limit.Reached()) GiveUp(file, limit);
        // A process that was idle may have ended just now.
        Ready = false;
        const int status = Process.End(Grace).value_or(SIGKILL);
        const bool killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
        if (tries < MostTries && (!fresh || killed)) continue;
        throw FileFault(FaultKind::Refused, "reading " + file.string() + " ended with " + TextOf(status), true);
    }
}

void MediaReader::MakeReady(const ReadLimit& limit) {
    if (Ready) return;
    if (Process.Socket() < 0) {
        Process.Start();
        Started = steady_clock::now();
    }
    ReadLimit start = limit;
    start.Deadline = std::min(limit.Deadline, Started + StartLimit);
    const auto greeting = Receive(start);
    Ready = greeting && greeting->has_greeting();
    if (Ready) return;
    // Started for nobody's sake in particular, it will be there for the next.
    if (limit.Reached()) throw Fault(FaultKind::Slow, "there was no time to start the reader");
    const auto status = Process.End(Grace);
    throw Fault(FaultKind::Internal,
                "cannot read media files: their reader ended with " + TextOf(status.value_or(SIGKILL)));
}

std::optional<Answer> MediaReader::Exchange(const Order& order, const Descriptor& file, const ReadLimit& limit) {
    if (!SendFrame(Process.Socket(), order.SerializeAsString(), file.Get())) return std::nullopt;
    auto answer = Receive(limit);
    const bool fits = answer && (answer->has_refusal() ||
                                 (order.kind() == Order::KIND_STREAMS ? answer->has_metadata() : answer->has_levels()));
    return fits ? std::move(answer) : std::nullopt;
}

std::optional<Answer> MediaReader::Receive(const ReadLimit& limit) const {
    const auto wait = [&] {
        pollfd event = {Process.Socket(), POLLIN, 0};
        // What has come counts, however late it is looked at.
        while (poll(&event, 1, limit.Reached() ? 0 : static_cast<int>(Slice.count())) <= 0)
            if (limit.Reached()) return false;
        return true;
    };
    const auto frame = ReceiveFrame(Process.Socket(), false, wait);
    Answer answer;
    if (!frame || !answer.ParseFromString(frame->Bytes)) return std::nullopt;
    return answer;
}

void MediaReader::GiveUp(const std::filesystem::path& file, const ReadLimit& limit) {
    Ready = false;
    Process.End({});
    if (limit.Stopped()) throw Fault(FaultKind::Slow, "stopped reading " + file.string());
    throw FileFault(FaultKind::Slow, "reading " + file.string() + " took too long", true);
}

}  // namespace ZorvicUnit
