#pragma once

#include <zorvic/types.h>

#include <string>
#include <vector>

namespace ZorvicCtl {

class Unit;

/// Waits until the files that are being imported are ready, and shows how far they are when a person looks. Throws
/// Failure for the first that the unit cannot take in.
std::vector<Zorvic::Asset> AwaitImports(Unit& unit, const std::vector<std::string>& fileNames);

}  // namespace ZorvicCtl
