#include "assets/asset_table.h"

#include "media/wire.h"
#include "store/database.h"

namespace ZorvicUnit {

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

std::vector<AssetRefusal> AssetTable::LoadRefusals() {
    std::vector<AssetRefusal> refusals;
    auto rows = Rows.Prepare("SELECT path, size, modified_ns, broken, reason FROM refusals");
    while (rows.Step())
        refusals.push_back({{rows.Text(0), {rows.Integer(1), rows.Integer(2)}}, rows.Integer(3) != 0, rows.Text(4)});
    return refusals;
}

void AssetTable::Save(const std::vector<AssetRecord>& records) {
    Transaction transaction(Rows);
    for (const AssetRecord& record : records) {
        auto row = Rows.Prepare(
            "INSERT OR REPLACE INTO assets(path, size, modified_ns, checksum, metadata) VALUES(?, ?, ?, ?, ?)");
        row.Bind(record.Content.Path).Bind(record.Content.Stamp.Size).Bind(record.Content.Stamp.ModifiedNS);
        row.Bind(record.Checksum).BindBlob(record.Metadata.SerializeAsString()).Run();
        Rows.Prepare("DELETE FROM refusals WHERE path = ?").Bind(record.Content.Path).Run();
    }
    transaction.Commit();
}

void AssetTable::SaveRefusals(const std::vector<AssetRefusal>& refusals) {
    Transaction transaction(Rows);
    for (const auto& [content, broken, reason] : refusals) {
        auto row = Rows.Prepare(
            "INSERT OR REPLACE INTO refusals(path, size, modified_ns, broken, reason) VALUES(?, ?, ?, ?, ?)");
        row.Bind(content.Path).Bind(content.Stamp.Size).Bind(content.Stamp.ModifiedNS);
        row.Bind(std::int64_t{broken}).Bind(reason).Run();
        Rows.Prepare("DELETE FROM assets WHERE path = ?").Bind(content.Path).Run();
    }
    transaction.Commit();
}

void AssetTable::SaveLevels(const std::vector<AssetLevels>& levels) {
    Transaction transaction(Rows);
    for (const AssetLevels& each : levels) {
        const auto& [path, stamp] = each.Content;
        auto row = Rows.Prepare("UPDATE assets SET envelope = ? WHERE path = ? AND size = ? AND modified_ns = ?");
        row.BindBlob(each.Levels == nullptr ? std::string() : ToBytes(*each.Levels))
            .Bind(path)
            .Bind(stamp.Size)
            .Bind(stamp.ModifiedNS)
            .Run();
    }
    transaction.Commit();
}

std::shared_ptr<const Envelope> AssetTable::LoadLevels(const AssetContent& content) {
    auto row = Rows.Prepare("SELECT envelope FROM assets WHERE path = ? AND size = ? AND modified_ns = ?");
    row.Bind(content.Path).Bind(content.Stamp.Size).Bind(content.Stamp.ModifiedNS);
    const std::string bytes = row.Step() ? row.Blob(0) : std::string();
    if (bytes.empty()) return nullptr;
    return std::make_shared<const Envelope>(ToEnvelope(bytes));
}

void AssetTable::Remove(const std::vector<std::string>& paths) {
    if (paths.empty()) return;
    Transaction transaction(Rows);
    for (const std::string& path : paths)
        for (const char* sql : {"DELETE FROM assets WHERE path = ?", "DELETE FROM refusals WHERE path = ?"})
            Rows.Prepare(sql).Bind(path).Run();
    transaction.Commit();
}

}  // namespace ZorvicUnit
