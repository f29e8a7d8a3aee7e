#pragma once

#include <chrono>
#include <string>

namespace ZorvicUnit {

/// From here on the log is written to standard error by a thread of its own: a reader that has stopped reading (a
/// stuck terminal, a full pipe) holds nobody up. Of what it cannot write it keeps the newest lines. Once, before the
/// first thread.
void StartLog(const std::string& name);

/// Says in the log how many lines were lost since the last call.
void ReportLostLines();

/// Waits until everything is written, no longer than this. Before the process ends without destructors.
void FlushLog(std::chrono::milliseconds limit);

}  // namespace ZorvicUnit
