#pragma once

#include <zorvic/v1/unit.grpc.pb.h>

#include <cstddef>

namespace Zorvic::Internal {

namespace Wire = ::zorvic::v1;

/// The largest message that a unit takes.
constexpr std::size_t MaxRequestBytes = std::size_t{1024} * 1024;

/// False when a text of the message is not UTF-8: the protocol cannot carry it, the receiver would drop the message.
bool HasValidText(const google::protobuf::Message& message);

}  // namespace Zorvic::Internal
