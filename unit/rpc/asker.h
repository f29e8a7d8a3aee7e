#pragma once

#include "caller.h"

#include <grpcpp/server_context.h>

namespace ZorvicUnit {

/// Who makes this call, as far as the connection tells.
Asker AskerOf(const grpc::ServerContext& context);

}  // namespace ZorvicUnit
