#pragma once

#include "assets/asset_index.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ZorvicUnit {

class Connection;

/// The levels of one content; null when it has none.
struct AssetLevels {
    AssetContent Content;
    std::shared_ptr<const Envelope> Levels;
};

/// What is known of the assets' contents, in a database that can be thrown away. A row that the disk has spoilt counts
/// as not there. Failures are thrown as Fault.
class AssetTable {
public:
    /// The schema, as for Connection::Migrate().
    static std::span<const char* const> Steps();

    explicit AssetTable(Connection& database) : Rows(database) {}

    /// Everything but the levels.
    std::vector<AssetRecord> Load();
    std::vector<AssetRefusal> LoadRefusals();
    /// What was known of an older content of the same path goes.
    void Save(const AssetRecord& record);
    void Save(const AssetRefusal& refusal);
    void Save(const AssetLevels& levels);
    /// Null when there are none.
    std::shared_ptr<const Envelope> LoadLevels(const AssetContent& content);
    void Remove(const std::string& path);

private:
    Connection& Rows;
};

}  // namespace ZorvicUnit
