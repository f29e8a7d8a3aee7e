#include "store/preset_table.h"

#include "fault.h"
#include "store/database.h"
#include "store/preset_row.h"
#include "store/request_table.h"

#include <limits>

namespace ZorvicUnit {

std::vector<zorvic::v1::Preset> PresetTable::Load() {
    std::vector<zorvic::v1::Preset> presets;
    auto statement = Rows.Prepare("SELECT pk, record, hash FROM presets ORDER BY pk");
    while (statement.Step())
        presets.push_back(PresetRow{statement.Integer(0), statement.Blob(1), statement.Integer(2)}.ToPreset());
    return presets;
}

std::int32_t PresetTable::Insert(const zorvic::v1::Preset& preset, std::uint64_t requestKey) {
    const PresetRow row = ToRow(preset);
    std::int64_t pk = 0;
    Rows.Write([&] {
        Rows.Prepare("INSERT INTO presets(record, hash) VALUES(?, ?)").BindBlob(row.Record).Bind(row.Hash).Run();
        pk = Rows.LastInsertKey();
        if (pk > std::numeric_limits<std::int32_t>::max())
            throw Fault(FaultKind::Internal, "store: all keys are used up");
        RequestTable(Rows).Add({requestKey, static_cast<std::int32_t>(pk)});
    });
    return static_cast<std::int32_t>(pk);
}

void PresetTable::Replace(const zorvic::v1::Preset& preset, std::uint64_t requestKey) {
    const PresetRow row = ToRow(preset);
    Rows.Write([&] {
        Rows.Prepare("UPDATE presets SET record = ?, hash = ? WHERE pk = ?")
            .BindBlob(row.Record)
            .Bind(row.Hash)
            .Bind(row.PK)
            .Run();
        RequestTable(Rows).Add({requestKey, preset.pk()});
    });
}

void PresetTable::Remove(std::int32_t pk) {
    Rows.Write([&] { Rows.Prepare("DELETE FROM presets WHERE pk = ?").Bind(std::int64_t{pk}).Run(); });
}

}  // namespace ZorvicUnit
