#include "store/preset_table.h"

#include "fault.h"
#include "store/database.h"

#include <spdlog/fmt/fmt.h>
#include <xxhash.h>

#include <limits>
#include <string>

namespace ZorvicUnit {

namespace {

struct Row {
    std::string Record;  ///< the preset without its key, which is the row's own
    std::int64_t Hash;
};

std::int64_t HashOf(const std::string& record) {
    return static_cast<std::int64_t>(XXH3_64bits(record.data(), record.size()));
}

Row ToRow(zorvic::v1::Preset preset) {
    preset.clear_pk();
    Row row{.Record = preset.SerializeAsString(), .Hash = 0};
    row.Hash = HashOf(row.Record);
    return row;
}

zorvic::v1::Preset FromRow(std::int64_t pk, const Row& row) {
    zorvic::v1::Preset preset;
    const bool keyFits = pk > 0 && pk <= std::numeric_limits<std::int32_t>::max();
    if (!keyFits || HashOf(row.Record) != row.Hash || !preset.ParseFromString(row.Record))
        throw Fault(FaultKind::Internal, fmt::format("store: the record of preset {} is damaged", pk));
    preset.set_pk(static_cast<std::int32_t>(pk));
    return preset;
}

}  // namespace

std::vector<zorvic::v1::Preset> PresetTable::Load() {
    std::vector<zorvic::v1::Preset> presets;
    auto statement = Rows.Prepare("SELECT pk, record, hash FROM presets ORDER BY pk");
    while (statement.Step())
        presets.push_back(FromRow(statement.Integer(0), {statement.Blob(1), statement.Integer(2)}));
    return presets;
}

std::int32_t PresetTable::Insert(const zorvic::v1::Preset& preset) {
    const Row row = ToRow(preset);
    Transaction transaction(Rows);
    Rows.Prepare("INSERT INTO presets(record, hash) VALUES(?, ?)").BindBlob(row.Record).Bind(row.Hash).Run();
    const std::int64_t pk = Rows.LastInsertKey();
    if (pk > std::numeric_limits<std::int32_t>::max()) throw Fault(FaultKind::Internal, "store: all keys are used up");
    transaction.Commit();
    Rows.NoteChanges();
    return static_cast<std::int32_t>(pk);
}

void PresetTable::Replace(const zorvic::v1::Preset& preset) {
    const Row row = ToRow(preset);
    Rows.Prepare("UPDATE presets SET record = ?, hash = ? WHERE pk = ?")
        .BindBlob(row.Record)
        .Bind(row.Hash)
        .Bind(std::int64_t{preset.pk()})
        .Run();
    Rows.NoteChanges();
}

void PresetTable::Remove(std::int32_t pk) {
    Rows.Prepare("DELETE FROM presets WHERE pk = ?").Bind(std::int64_t{pk}).Run();
    Rows.NoteChanges();
}

}  // namespace ZorvicUnit
