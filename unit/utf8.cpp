#include "utf8.h"

#include <cstddef>
#include <cstdint>

namespace ZorvicUnit {

namespace {

struct Lead {
    std::size_t Length;    ///< bytes of the sequence; 0: not a first byte
    std::uint32_t Bits;    ///< what the first byte contributes
    std::uint32_t Lowest;  ///< smallest character that needs this length
};

Lead ReadLead(std::uint32_t byte) {
    if (byte < 0x80U) return {1, byte, 0};
    if ((byte & 0xE0U) == 0xC0U) return {2, byte & 0x1FU, 0x80U};
    if ((byte & 0xF0U) == 0xE0U) return {3, byte & 0x0FU, 0x800U};
    if ((byte & 0xF8U) == 0xF0U) return {4, byte & 0x07U, 0x10000U};
    return {0, 0, 0};
}

}  // namespace

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const Lead lead = ReadLead(static_cast<unsigned char>(text.front()));
        if (lead.Length == 0 || lead.Length > text.size()) return false;
        std::uint32_t character = lead.Bits;
        for (const char next : text.substr(1, lead.Length - 1)) {
            const auto byte = static_cast<std::uint32_t>(static_cast<unsigned char>(next));
            if ((byte & 0xC0U) != 0x80U) return false;
            character = (character << 6U) | (byte & 0x3FU);
        }
        const bool surrogate = character >= 0xD800U && character <= 0xDFFFU;
        if (character < lead.Lowest || character > 0x10FFFFU || surrogate) return false;
        text.remove_prefix(lead.Length);
    }
    return true;
}

}  // namespace ZorvicUnit
