#pragma once

#include <string>

namespace ZorvicUnit {

/// How much a thread may get in the way of what plays.
enum class Manners {
    Normal,
    Modest,  ///< gives way when processor or disk are wanted
    Last,    ///< takes what nobody else wants
};

/// Names the calling thread (at most 15 bytes) and sets its priorities.
void NameThread(const std::string& name, Manners manners = Manners::Normal);

}  // namespace ZorvicUnit
