// Frames of the state stream, as a mirror takes them in: all records of the wire pass through here.

#include "fuzz/fuzz.h"
#include "link_error.h"
#include "mirror.h"

#include <algorithm>
#include <functional>
#include <vector>

using namespace Zorvic::Internal;

namespace {

/// Lists are in order and name everything once.
void RequireOrder(const UnitState& state) {
    std::vector<Zorvic::Preset> presets;
    CopyRecords(*state.Presets, presets);
    Require(std::ranges::adjacent_find(presets, std::ranges::greater_equal(), &Zorvic::Preset::PK) == presets.end());
    std::vector<Zorvic::Asset> assets;
    CopyRecords(*state.Assets, assets);
    Require(std::ranges::adjacent_find(assets, std::ranges::greater_equal(), &Zorvic::Asset::FullPath) == assets.end());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Mirror mirror("");
    std::uint64_t revision = 0;
    // Frames behind a byte of their length each.
    for (std::string_view rest = TextOf(data, size); !rest.empty();) {
        const std::string_view bytes = rest.substr(1, static_cast<unsigned char>(rest.front()));
        rest.remove_prefix(1 + bytes.size());
        Wire::Frame frame;
        if (!frame.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) continue;
        try {
            mirror.Apply(frame);
        } catch (const LinkError&) {
            return 0;
        }
        const auto state = mirror.Current();
        if (!state) continue;
        Require(state->Revision >= revision);
        revision = state->Revision;
        RequireOrder(*state);
    }
    return 0;
}
