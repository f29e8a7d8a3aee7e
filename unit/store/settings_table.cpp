#include "store/settings_table.h"

#include "store/database.h"

#include <spdlog/fmt/fmt.h>

#include <array>
#include <charconv>
#include <random>

namespace ZorvicUnit {

namespace {

constexpr auto GuidName = "guid";
constexpr auto SelectedName = "selected_preset";

// A random UUID (version 4).
std::string NewGuid() {
    std::random_device random;
    std::array<std::uint32_t, 4> word{};
    for (auto& part : word)
        part = random();
    word[1] = (word[1] & 0xFFFF0FFFU) | 0x00004000U;
    word[2] = (word[2] & 0x3FFFFFFFU) | 0x80000000U;
    return fmt::format("{:08x}-{:04x}-{:04x}-{:04x}-{:04x}{:08x}", word[0], word[1] >> 16U, word[1] & 0xFFFFU,
                       word[2] >> 16U, word[2] & 0xFFFFU, word[3]);
}

}  // namespace

std::string SettingsTable::Guid() {
    auto guid = Get(GuidName);
    if (!guid) Rows.Write([&] { Set(GuidName, *(guid = NewGuid())); });
    return *guid;
}

std::int32_t SettingsTable::SelectedPreset() {
    std::int32_t pk = 0;
    const std::string text = Get(SelectedName).value_or("");
    std::from_chars(text.data(), text.data() + text.size(), pk);
    return pk;
}

void SettingsTable::SetSelectedPreset(std::int32_t pk) {
    Rows.Write([&] { Set(SelectedName, std::to_string(pk)); });
}

std::optional<std::string> SettingsTable::Get(const char* name) {
    auto statement = Rows.Prepare("SELECT value FROM settings WHERE name = ?");
    statement.Bind(std::string_view(name));
    return statement.Step() ? std::optional(statement.Text(0)) : std::nullopt;
}

void SettingsTable::Set(const char* name, const std::string& value) {
    Rows.Prepare(
            "INSERT INTO settings(name, value) VALUES(?, ?) ON CONFLICT(name) DO UPDATE SET value = excluded.value")
        .Bind(std::string_view(name))
        .Bind(std::string_view(value))
        .Run();
}

}  // namespace ZorvicUnit
