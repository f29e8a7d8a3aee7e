#pragma once

#include <span>

namespace ZorvicUnit {

/// SQL that takes the store from schema number i to i + 1, by position. All tables of the unit stand in this one list.
/// An entry that has been released is never edited: a change of the schema is a new entry at the end.
std::span<const char* const> Migrations();

}  // namespace ZorvicUnit
