#pragma once

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <vector>

namespace ZorvicUnit {

class Database;

/// The stored presets. A change is on disk when its call returns; when it throws a Fault, nothing has changed.
/// The key of a request that shall not be done twice is stored with what it makes.
class PresetTable {
public:
    /// The database must outlive the table.
    explicit PresetTable(Database& database) : Rows(database) {}

    /// All presets, by key. Throws Fault naming the key when a record is damaged: a preset is never left out silently.
    std::vector<zorvic::v1::Preset> Load();
    /// Stores a new preset and gives its key, which no preset has had before.
    std::int32_t Insert(const zorvic::v1::Preset& preset, std::uint64_t requestKey = 0);
    void Replace(const zorvic::v1::Preset& preset, std::uint64_t requestKey = 0);
    void Remove(std::int32_t pk);

private:
    Database& Rows;
};

}  // namespace ZorvicUnit
