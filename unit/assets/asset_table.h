#pragma once

#include "assets/asset_index.h"

#include <memory>
#include <string>
#include <vector>

namespace ZorvicUnit {

class Database;

/// The levels of one content; null when it has none.
struct AssetLevels {
    AssetContent Content;
    std::shared_ptr<const Envelope> Levels;
};

/// What is known of the assets' contents, kept over restarts. May be called from several threads; each call is one
/// transaction. Failures are thrown as Fault.
class AssetTable {
public:
    explicit AssetTable(Database& database) : Rows(database) {}

    /// Everything but the levels. Records that cannot be read are left out.
    std::vector<AssetRecord> Load();
    std::vector<AssetRefusal> LoadRefusals();
    /// Writes records; what was known of an older content of the same path goes. The same with refusals.
    void Save(const std::vector<AssetRecord>& records);
    void SaveRefusals(const std::vector<AssetRefusal>& refusals);
    /// Does nothing for a row that is of another content.
    void SaveLevels(const std::vector<AssetLevels>& levels);
    /// Null when there are none.
    std::shared_ptr<const Envelope> LoadLevels(const AssetContent& content);
    void Remove(const std::vector<std::string>& paths);

private:
    Database& Rows;
};

}  // namespace ZorvicUnit
