#pragma once

#include <zorvic/enums.h>

#include <grpcpp/support/status.h>

namespace Zorvic::Internal {

/// What a caller is told about the outcome of a call on the wire.
StatusCode ToStatusCode(const grpc::Status& status);

}  // namespace Zorvic::Internal
