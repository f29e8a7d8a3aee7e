#include "assets/asset_table.h"

#include "store/database.h"

namespace ZorvicUnit {

namespace {

std::string ToBytes(const Envelope* levels) {
    std::string bytes;
    if (levels == nullptr) return bytes;
    for (const auto& [left, right] : levels->Levels) {
        bytes += static_cast<char>(left);
        bytes += static_cast<char>(right);
    }
    return bytes;
}

}  // namespace

std::vector<AssetRecord> AssetTable::Load() {
    std::vector<AssetRecord> records;
    auto rows = Rows.Prepare("SELECT path, size, modified_ns, checksum, metadata, envelope IS NOT NULL FROM assets");
    while (rows.Step()) {
        AssetRecord record{{rows.Text(0), {rows.Integer(1), rows.Integer(2)}}, rows.Text(3), {}, rows.Integer(5) != 0};
        if (record.Metadata.ParseFromString(rows.Blob(4)) && !record.Checksum.empty())
            records.push_back(std::move(record));
    }
    return records;
}

void AssetTable::Save(const std::vector<AssetRecord>& records) {
    Transaction transaction(Rows);
    for (const AssetRecord& record : records) {
        auto row = Rows.Prepare(
            "INSERT OR REPLACE INTO assets(path, size, modified_ns, checksum, metadata) VALUES(?, ?, ?, ?, ?)");
        row.Bind(record.Content.Path).Bind(record.Content.Stamp.Size).Bind(record.Content.Stamp.ModifiedNS);
        row.Bind(record.Checksum).BindBlob(record.Metadata.SerializeAsString()).Run();
    }
    transaction.Commit();
}

void AssetTable::SaveLevels(const std::vector<AssetLevels>& levels) {
    Transaction transaction(Rows);
    for (const AssetLevels& each : levels) {
        const auto& [path, stamp] = each.Content;
        auto row = Rows.Prepare("UPDATE assets SET envelope = ? WHERE path = ? AND size = ? AND modified_ns = ?");
        row.BindBlob(ToBytes(each.Levels.get())).Bind(path).Bind(stamp.Size).Bind(stamp.ModifiedNS).Run();
    }
    transaction.Commit();
}

std::shared_ptr<const Envelope> AssetTable::LoadLevels(const AssetContent& content) {
    auto row = Rows.Prepare("SELECT envelope FROM assets WHERE path = ? AND size = ? AND modified_ns = ?");
    row.Bind(content.Path).Bind(content.Stamp.Size).Bind(content.Stamp.ModifiedNS);
    const std::string bytes = row.Step() ? row.Blob(0) : std::string();
    if (bytes.empty()) return nullptr;
    auto levels = std::make_shared<Envelope>();
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        levels->Levels.push_back({static_cast<std::uint8_t>(bytes[i]), static_cast<std::uint8_t>(bytes[i + 1])});
    return levels;
}

void AssetTable::Remove(const std::vector<std::string>& paths) {
    if (paths.empty()) return;
    Transaction transaction(Rows);
    for (const std::string& path : paths)
        Rows.Prepare("DELETE FROM assets WHERE path = ?").Bind(path).Run();
    transaction.Commit();
}

}  // namespace ZorvicUnit
