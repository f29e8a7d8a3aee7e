#include "assets/asset_table.h"

#include "media/wire.h"
#include "store/connection.h"

#include <xxhash.h>

#include <array>
#include <initializer_list>
#include <string_view>

namespace ZorvicUnit {

namespace {

constexpr std::array<const char*, 1> Schema = {R"sql(
    CREATE TABLE assets(
        path TEXT PRIMARY KEY,
        size INTEGER NOT NULL,
        modified_ns INTEGER NOT NULL,
        checksum TEXT NOT NULL,
        metadata BLOB NOT NULL,
        hash INTEGER NOT NULL) WITHOUT ROWID;
    CREATE TABLE levels(
        path TEXT PRIMARY KEY,
        size INTEGER NOT NULL,
        modified_ns INTEGER NOT NULL,
        envelope BLOB NOT NULL,
        hash INTEGER NOT NULL);
    CREATE TABLE refusals(
        path TEXT PRIMARY KEY,
        size INTEGER NOT NULL,
        modified_ns INTEGER NOT NULL,
        broken INTEGER NOT NULL,
        reason TEXT NOT NULL,
        hash INTEGER NOT NULL) WITHOUT ROWID;
    )sql"};

std::int64_t HashOf(const AssetContent& content, std::initializer_list<std::string_view> values) {
    std::string all =
        content.Path + '\n' + std::to_string(content.Stamp.Size) + '\n' + std::to_string(content.Stamp.ModifiedNS);
    for (const std::string_view value : values)
        all.append(1, '\n').append(value);
    return static_cast<std::int64_t>(XXH3_64bits(all.data(), all.size()));
}

void BindContent(Statement& row, const AssetContent& content) {
    row.Bind(content.Path).Bind(content.Stamp.Size).Bind(content.Stamp.ModifiedNS);
}

AssetContent ContentOf(const Statement& row) {
    return {row.Text(0), {row.Integer(1), row.Integer(2)}};
}

std::string_view TextOf(bool broken) {
    return broken ? "broken" : "other";
}

}  // namespace

std::span<const char* const> AssetTable::Steps() {
    return Schema;
}

std::vector<AssetRecord> AssetTable::Load() {
    std::vector<AssetRecord> records;
    auto rows = Rows.Prepare(
        "SELECT path, size, modified_ns, checksum, metadata, hash, EXISTS(SELECT 1 FROM levels WHERE levels.path = "
        "assets.path AND levels.size = assets.size AND levels.modified_ns = assets.modified_ns) FROM assets");
    while (rows.Step()) {
        AssetRecord record{ContentOf(rows), rows.Text(3), {}, rows.Integer(6) != 0};
        const std::string metadata = rows.Blob(4);
        const bool whole = HashOf(record.Content, {record.Checksum, metadata}) == rows.Integer(5);
        if (whole && record.Metadata.ParseFromString(metadata)) records.push_back(std::move(record));
    }
    return records;
}

std::vector<AssetRefusal> AssetTable::LoadRefusals() {
    std::vector<AssetRefusal> refusals;
    auto rows = Rows.Prepare("SELECT path, size, modified_ns, broken, reason, hash FROM refusals");
    while (rows.Step()) {
        AssetRefusal refusal{ContentOf(rows), rows.Integer(3) != 0, rows.Text(4)};
        const bool whole = HashOf(refusal.Content, {TextOf(refusal.Broken), refusal.Reason}) == rows.Integer(5);
        if (whole) refusals.push_back(std::move(refusal));
    }
    return refusals;
}

void AssetTable::Save(const AssetRecord& record) {
    Remove(record.Content.Path);
    const std::string metadata = record.Metadata.SerializeAsString();
    auto row =
        Rows.Prepare("INSERT INTO assets(path, size, modified_ns, checksum, metadata, hash) VALUES(?, ?, ?, ?, ?, ?)");
    BindContent(row, record.Content);
    row.Bind(record.Checksum).BindBlob(metadata).Bind(HashOf(record.Content, {record.Checksum, metadata})).Run();
}

void AssetTable::Save(const AssetRefusal& refusal) {
    Remove(refusal.Content.Path);
    auto row =
        Rows.Prepare("INSERT INTO refusals(path, size, modified_ns, broken, reason, hash) VALUES(?, ?, ?, ?, ?, ?)");
    BindContent(row, refusal.Content);
    row.Bind(std::int64_t{refusal.Broken}).Bind(refusal.Reason);
    row.Bind(HashOf(refusal.Content, {TextOf(refusal.Broken), refusal.Reason})).Run();
}

void AssetTable::Save(const AssetLevels& levels) {
    const std::string bytes = levels.Levels == nullptr ? std::string() : ToBytes(*levels.Levels);
    auto row =
        Rows.Prepare("INSERT OR REPLACE INTO levels(path, size, modified_ns, envelope, hash) VALUES(?, ?, ?, ?, ?)");
    BindContent(row, levels.Content);
    row.BindBlob(bytes).Bind(HashOf(levels.Content, {bytes})).Run();
}

std::shared_ptr<const Envelope> AssetTable::LoadLevels(const AssetContent& content) {
    auto row = Rows.Prepare("SELECT envelope, hash FROM levels WHERE path = ? AND size = ? AND modified_ns = ?");
    BindContent(row, content);
    if (!row.Step()) return nullptr;
    const std::string bytes = row.Blob(0);
    if (bytes.empty() || HashOf(content, {bytes}) != row.Integer(1)) return nullptr;
    return std::make_shared<const Envelope>(ToEnvelope(bytes));
}

void AssetTable::Remove(const std::string& path) {
    for (const char* sql : {"DELETE FROM assets WHERE path = ?", "DELETE FROM levels WHERE path = ?",
                            "DELETE FROM refusals WHERE path = ?"})
        Rows.Prepare(sql).Bind(path).Run();
}

}  // namespace ZorvicUnit
