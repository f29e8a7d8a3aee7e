#include "printing.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>

namespace ZorvicCtl {
namespace {

/// In characters: every one is taken for one wide.
std::size_t WidthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string Dump(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string OneLine(const std::string& text) {
    std::string line = text;
    for (char& c : line)
        if (static_cast<unsigned char>(c) < 0x20U || c == 0x7F) c = ' ';
    return line;
}

std::string SizeText(std::int64_t bytes) {
    constexpr std::int64_t MiB = 1LL << 20;
    constexpr std::int64_t GiB = 1LL << 30;
    const bool isBig = bytes >= GiB;
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.2f%s",
                  static_cast<double>(bytes) / static_cast<double>(isBig ? GiB : MiB), isBig ? "GiB" : "MiB");
    return text.data();
}

void Table::Print(const std::string& none) const {
    if (Rows.size() == 1) return PrintLine(none);
    std::vector<std::size_t> widths(Rows.front().size());
    for (const auto& row : Rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], WidthOf(row[i]));
    for (const auto& row : Rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += row[i] + std::string(widths[i] - WidthOf(row[i]) + 2, ' ');
        line.erase(line.find_last_not_of(' ') + 1);
        PrintLine(line);
    }
}

void PrintLine(const std::string& text) {
    std::cout << OneLine(text) << std::endl;
}

void PrintJson(const Json& json) {
    std::cout << Dump(json, 2) << std::endl;
}

void PrintJsonLine(const Json& json) {
    std::cout << Dump(json, -1) << std::endl;
}

}  // namespace ZorvicCtl
