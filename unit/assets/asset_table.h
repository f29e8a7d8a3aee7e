#pragma once

#include "assets/asset_index.h"

#include <memory>
#include <string>
#include <vector>

namespace ZorvicUnit {

class Database;

/// What is known of the assets' contents, kept over restarts. May be called from several threads; each call is one
/// transaction. Failures are thrown as Fault.
class AssetTable {
public:
    explicit AssetTable(Database& database) : Rows(database) {}

    /// Everything but the levels. Records that cannot be read are left out.
    std::vector<AssetRecord> Load();
    /// Writes records; levels of an older content of the same path go.
    void Save(const std::vector<AssetRecord>& records);
    /// Null levels mean: this content has none. Does nothing when the row is of another content.
    void SaveLevels(const AssetContent& content, const Envelope* levels);
    /// Null when there are none.
    std::shared_ptr<const Envelope> LoadLevels(const AssetContent& content);
    void Remove(const std::vector<std::string>& paths);

private:
    Database& Rows;
};

}  // namespace ZorvicUnit
