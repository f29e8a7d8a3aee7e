#pragma once

#include "fault.h"

#include <cstdint>
#include <functional>
#include <string>

namespace ZorvicUnit {

/// The console that asks for something; nobody when it has no address.
struct Asker {
    std::string Address;     ///< "192.0.2.1:50000"
    std::string Client;      ///< what it calls itself, or its certificate does
    bool Certified = false;  ///< the latter
};

/// What a command knows of the call that brought it.
struct Caller {
    /// False when nobody waits for the answer any more. Such a command is not carried out: its caller has been told
    /// that it failed, and may have tried again.
    std::function<bool()> Waits = [] { return true; };
    /// The same for every repetition of one request; 0 for a request that does no harm twice.
    std::uint64_t RequestKey = 0;
    Asker Who = {};

    /// Throws Fault TooLate when nobody waits any more.
    void CheckWaits() const {
        if (!Waits()) throw Fault(FaultKind::TooLate, "it came after the caller had given up; nothing was done");
    }
};

}  // namespace ZorvicUnit
