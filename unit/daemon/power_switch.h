#pragma once

#include <zorvic/v1/unit.pb.h>

namespace ZorvicUnit {

/// Where all requests to stop or to start again come together for the main thread.
class PowerSwitch {
public:
    /// Takes over SIGTERM and SIGINT for this thread and all that it starts, so make it before any other thread. A
    /// broken connection and a file that would grow beyond its limit are errors of their calls from here on, not
    /// signals that end the process.
    PowerSwitch();

    /// Takes note; any thread.
    void Request(zorvic::v1::PowerAction action);
    /// The next request; a signal to end counts as a shutdown. Main thread.
    zorvic::v1::PowerAction Wait();
};

}  // namespace ZorvicUnit
