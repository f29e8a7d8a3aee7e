#pragma once

#include <zorvic/v1/unit.grpc.pb.h>

#include <cstddef>
#include <string>

namespace Zorvic::Internal {

namespace Wire = ::zorvic::v1;

/// Of the protocol that this library speaks.
constexpr const char* ApiVersion = "1.1";
/// False for a version with another major number. The first units and consoles named none.
bool SpeaksAlike(const std::string& version);

/// The largest message that a unit takes.
constexpr std::size_t MaxRequestBytes = std::size_t{1024} * 1024;

/// False when a text of the message is not UTF-8: the protocol cannot carry it, the receiver would drop the message.
bool HasValidText(const google::protobuf::Message& message);

}  // namespace Zorvic::Internal
