#pragma once

#include <zorvic/v1/unit.grpc.pb.h>

namespace Zorvic::Internal {

namespace Wire = ::zorvic::v1;

/// False when a text of the message is not UTF-8: the protocol cannot carry it, the receiver would drop the message.
bool HasValidText(const google::protobuf::Message& message);

}  // namespace Zorvic::Internal
