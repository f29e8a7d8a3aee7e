#pragma once

#include <stdexcept>
#include <string>

namespace ZorvicUnit {

/// Why the unit did not do what it was asked; the service maps each to one wire status.
enum class FaultKind {
    Misused,   ///< the request makes no sense
    NotFound,  ///< no such preset, mark, asset or drive
    Refused,   ///< understood, and not allowed now
    DiskFull,  ///< no room left
    Slow,      ///< did not finish in time; goes on and answers a later request
    TooLate,   ///< its turn came after the caller had given up; nothing was done
    Internal,  ///< a fault of the unit itself
};

/// The one exception of the unit's domain. The text goes to the log and to the client.
class Fault : public std::runtime_error {
public:
    Fault(FaultKind kind, const std::string& text) : std::runtime_error(text), Kind(kind) {}
    const FaultKind Kind;
};

}  // namespace ZorvicUnit
