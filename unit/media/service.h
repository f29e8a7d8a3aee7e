#pragma once

#include "files/descriptor.h"

#include <media.pb.h>

#include <functional>

namespace ZorvicUnit {

/// Reads what an order asks for of a file that is open for reading.
zorvic::media::Answer CarryOut(const zorvic::media::Order& order, const Descriptor& file);

using OrderHandler = std::function<zorvic::media::Answer(const zorvic::media::Order&, const Descriptor&)>;

/// Locks the process up, greets on the socket, and answers orders until the unit is gone, has none for some seconds, or
/// the process has lived so long that a new one is better.
void Serve(int socket, const OrderHandler& handler = &CarryOut);

}  // namespace ZorvicUnit
