#include "store/preset_row.h"

#include "store/sqlite_fault.h"

#include <spdlog/fmt/fmt.h>
#include <xxhash.h>

#include <limits>
#include <utility>

namespace ZorvicUnit {

namespace {

std::int64_t HashOf(const std::string& record) {
    return static_cast<std::int64_t>(XXH3_64bits(record.data(), record.size()));
}

}  // namespace

PresetRow ToRow(zorvic::v1::Preset preset) {
    const std::int64_t pk = preset.pk();
    preset.clear_pk();
    std::string record = preset.SerializeAsString();
    const std::int64_t hash = HashOf(record);
    return {.PK = pk, .Record = std::move(record), .Hash = hash};
}

bool PresetRow::IsWhole() const {
    return PK > 0 && PK <= std::numeric_limits<std::int32_t>::max() && HashOf(Record) == Hash &&
           zorvic::v1::Preset().ParseFromString(Record);
}

zorvic::v1::Preset PresetRow::ToPreset() const {
    zorvic::v1::Preset preset;
    if (!IsWhole() || !preset.ParseFromString(Record)) throw StoreDamage(fmt::format("the record of preset {}", PK));
    preset.set_pk(static_cast<std::int32_t>(PK));
    return preset;
}

// The same as the column of that name.
std::int64_t PresetRow::Mark() const {
    constexpr std::int64_t Bits = 0x7FFF'FFFF;
    return (((Hash & Bits) * (((PK * 2'654'435'761) & Bits) | 1)) >> 16U) & Bits;
}

}  // namespace ZorvicUnit
