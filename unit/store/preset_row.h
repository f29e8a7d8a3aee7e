#pragma once

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <string>

namespace ZorvicUnit {

/// A preset as the database holds it.
struct PresetRow {
    std::int64_t PK = 0;
    std::string Record;  ///< without its key, which is the row's own
    std::int64_t Hash = 0;

    /// False when the disk has spoilt it.
    bool IsWhole() const;
    /// Throws StoreDamage that names the key.
    zorvic::v1::Preset ToPreset() const;
    /// What the row adds to the ledger's sum.
    std::int64_t Mark() const;
};

PresetRow ToRow(zorvic::v1::Preset preset);

}  // namespace ZorvicUnit
