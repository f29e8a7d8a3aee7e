#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ZorvicUnit {

class Database;

/// What the unit remembers about itself. Throws Fault when the store fails.
class SettingsTable {
public:
    /// The database must outlive the table.
    explicit SettingsTable(Database& database) : Rows(database) {}

    /// The unit's identifier: made at the first call for this store, the same ever after.
    std::string Guid();
    /// Key of the selected preset; 0 for none.
    std::int32_t SelectedPreset();
    void SetSelectedPreset(std::int32_t pk);

private:
    std::optional<std::string> Get(const char* name);
    void Set(const char* name, const std::string& value);

    Database& Rows;
};

}  // namespace ZorvicUnit
