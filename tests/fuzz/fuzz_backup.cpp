// A backup file: any text at all, and any content under a checksum that holds. What is understood is written again as
// it was, and can be planned for a unit.

#include "backup.h"
#include "failure.h"
#include "fuzz/fuzz.h"
#include "records_json.h"
#include "restore_plan.h"

#include <openssl/sha.h>

#include <array>
#include <cstdio>
#include <optional>

using namespace ZorvicCtl;

namespace {

std::optional<Backup> Understood(const std::string& text) {
    try {
        return FromFileText(text, "show.json");
    } catch (const Failure&) {
        return std::nullopt;
    }
}

/// Without a checksum that holds nothing would get past the door.
std::string FileAround(const Json& content) {
    const std::string text = content.dump();
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest.data());
    std::string hex;
    for (const unsigned char byte : digest) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02x", byte);
        hex += digits.data();
    }
    return Json({{"format", "zorvic-backup"}, {"schema", 1}, {"sha256", hex}, {"content", content}}).dump();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(TextOf(data, size));
    Understood(text);
    const Json content = Json::parse(text, nullptr, false);
    if (content.is_discarded()) return 0;
    const auto backup = Understood(FileAround(content));
    if (!backup) return 0;
    const std::string written = ToFileText(*backup);
    const auto again = Understood(written);
    Require(again && ToFileText(*again) == written);
    Require(PlanRestore(*backup, *again, {}).ChangesNothing());
    PlanRestore(*backup, {}, {});
    return 0;
}
