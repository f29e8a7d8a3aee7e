#pragma once

#include "files/descriptor.h"

#include <google/protobuf/message_lite.h>

#include <chrono>
#include <mutex>

namespace ZorvicRender {

/// One end of a stream socket over which two processes exchange messages. Send() and Receive() may run at once, in two
/// threads.
class MessagePipe {
public:
    explicit MessagePipe(ZorvicUnit::Descriptor socket) : Socket(std::move(socket)) {}

    /// False when the other side is gone, or does not take the message within the socket's time limit; the pipe is of
    /// no use then.
    bool Send(const google::protobuf::MessageLite& message);
    /// Waits for a message; false when the other side is gone or does not speak this language.
    bool Receive(google::protobuf::MessageLite& message);
    /// From now on Receive() returns false as well when nothing comes for so long; zero: waits.
    void LimitReceiving(std::chrono::milliseconds limit);
    /// Wakes up both, in any thread.
    void Shutdown();

private:
    ZorvicUnit::Descriptor Socket;
    std::mutex Sending;  ///< keeps messages whole
};

}  // namespace ZorvicRender
