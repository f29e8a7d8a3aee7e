#pragma once

namespace ZorvicUnit {

/// Leaves the calling process, which parses what strangers made, nothing but memory, time on the processor, and the
/// descriptors 0 to 2 with those that it is passed: no network, no file or program by name, no other process. It ends
/// with the process that started it. There is no way back. Throws Fault Internal when the system has not the means.
void EnterSandbox();

/// Seconds on the processor after which the system ends the process; a worker that has lived long should make room.
constexpr int ProcessorSeconds = 16 * 60;

}  // namespace ZorvicUnit
