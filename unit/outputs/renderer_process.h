#pragma once

#include "render/message_pipe.h"

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>

namespace ZorvicUnit {

/// One running zorvic-render. It ends with the thread that made the object.
class RendererProcess {
public:
    /// Throws Fault Internal when it can not be started.
    RendererProcess();
    /// Kills it.
    ~RendererProcess();
    RendererProcess(const RendererProcess&) = delete;
    RendererProcess& operator=(const RendererProcess&) = delete;

    ZorvicRender::MessagePipe& Pipe() { return *Socket; }
    /// How long its drawing threads have been kept from running by other work of this machine, in all.
    std::chrono::nanoseconds Starved() const;
    struct Ending {
        std::string Text;
        bool Crashed = false;  ///< by its own fault
    };
    /// Ends it, whatever it does, and says how it ended.
    Ending End();

private:
    std::unique_ptr<ZorvicRender::MessagePipe> Socket;
    pid_t Process = -1;
};

}  // namespace ZorvicUnit
