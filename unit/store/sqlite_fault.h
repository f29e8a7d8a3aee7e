#pragma once

#include "fault.h"

#include <string>
#include <string_view>

struct sqlite3;

namespace ZorvicUnit {

/// The bytes of a database are not what was written: trying again does not help, a copy may.
class StoreDamage : public Fault {
public:
    explicit StoreDamage(const std::string& what)
        : Fault(FaultKind::Internal, "store: the database is damaged: " + what) {}
};

/// Throws the database's last failure: StoreDamage, or Fault DiskFull or Internal. `what` was tried.
[[noreturn]] void RaiseLast(sqlite3* handle, std::string_view what);

}  // namespace ZorvicUnit
