#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace ZorvicCtl {

/// Fields stay in the order in which they were added: people read it, too.
using Json = nlohmann::ordered_json;

/// Text of a unit on a line of its own: what would move the cursor or change colours is left out.
std::string OneLine(const std::string& text);
/// Bytes as the console shows them: "512.00MiB", from 2^30 on "1.50GiB".
std::string SizeText(std::int64_t bytes);

/// Columns as wide as their longest text.
class Table {
public:
    explicit Table(std::vector<std::string> header) : Rows{std::move(header)} {}
    void Add(std::vector<std::string> row) { Rows.push_back(std::move(row)); }
    /// Prints nothing but `none` without rows.
    void Print(const std::string& none) const;

private:
    std::vector<std::vector<std::string>> Rows;  // the first is the header
};

/// Writes to standard output, at once. A line of text, or JSON that spans lines.
void PrintLine(const std::string& text);
void PrintJson(const Json& json);
/// On one line, for streams of objects.
void PrintJsonLine(const Json& json);

}  // namespace ZorvicCtl
