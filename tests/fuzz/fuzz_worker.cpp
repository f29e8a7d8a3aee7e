// What the processes beside the unit say to it: the reader of media files, or the renderer when the first byte is odd.

#include "fuzz/fuzz.h"
#include "media/wire.h"
#include "render/message_pipe.h"

#include <media.pb.h>
#include <render.pb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

using namespace ZorvicUnit;

namespace {

void HearReader(const Descriptor& socket) {
    while (const auto frame = ReceiveFrame(socket.Get(), true, [] { return true; })) {
        Require(frame->Passed.Get() < 0);
        zorvic::media::Answer answer;
        if (!answer.ParseFromString(frame->Bytes) || !answer.has_levels()) continue;
        const Envelope levels = ToEnvelope(answer.levels().peaks());
        Require(levels.Levels.size() == answer.levels().peaks().size() / 2);
        Require(ToEnvelope(ToBytes(levels)).Levels == levels.Levels);
        for (const auto& [left, right] : levels.Levels)
            Require(left <= 100 && right <= 100);
    }
}

void HearRenderer(Descriptor socket) {
    ZorvicRender::MessagePipe pipe(std::move(socket));
    zorvic::render::FromRenderer message;
    while (pipe.Receive(message)) {
        const std::string again = message.SerializeAsString();
        Require(message.ParseFromString(again));
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 60'000) return 0;  // what a socket takes at once
    std::array<int, 2> ends{};
    Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0);
    Descriptor heard(ends[0]);
    {
        const Descriptor speaker(ends[1]);
        Require(write(speaker.Get(), data + 1, size - 1) == static_cast<ssize_t>(size - 1));
    }
    if (data[0] % 2 == 0)
        HearReader(heard);
    else
        HearRenderer(std::move(heard));
    return 0;
}
