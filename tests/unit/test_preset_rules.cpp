#include "fault.h"
#include "model/preset_rules.h"
#include "unit/unitfakes.h"

#include <google/protobuf/text_format.h>

using zorvic::v1::Preset;

namespace {

std::string Verdict(Preset preset) {
    try {
        ZorvicUnit::Normalise(preset, 0);
        ZorvicUnit::CheckPreset(preset);
    } catch (const ZorvicUnit::Fault& fault) {
        EXPECT_EQ(fault.Kind, ZorvicUnit::FaultKind::Misused);
        return fault.what();
    }
    return "stored";
}

/// The text as often as that, with the numbers from 0 on for each hash.
std::string Times(int count, const std::string& text) {
    std::string all;
    for (int number = 0; number < count; ++number)
        for (const char letter : text)
            all += letter == '#' ? std::to_string(number) : std::string(1, letter);
    return all;
}

TEST(PresetRules, HoldTheLimitsToTheLastUnit) {
    const auto pinned = [](const std::string& assets) { return "canvases { " + assets + " }"; };
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"stored", "name: '" + Times(256, "x") + "'"},
        {"the name of more than 256", "name: '" + Times(257, "x") + "'"},
        {"the name is not valid UTF-8", "name: '\\xC3('"},
        {"not valid UTF-8", "notes: 'cut \\xE2\\x82'"},
        {"not valid UTF-8", pinned("assets { full_path: '\\xC0\\x80' }")},
        {"stored", "notes: '" + Times(65'536, "x") + "'"},
        {"the notes of more than 65536", "notes: '" + Times(65'537, "x") + "'"},
        {"stored", Times(15, "canvases { index: # } ") + "canvases { index: 15 num_outputs: 4 }"},
        {"more than 16 canvases", Times(17, "canvases { index: # } ")},
        {"need 4294967296 players", "canvases { num_outputs: 4294967295 } canvases { index: 1 num_outputs: 1 }"},
        {"order of their index", Times(2, "canvases { index: 3 } ")},
        {"not a finite number", pinned("assets { full_path: 'a' hue: nan }")},
        {"stored", Times(1'000, "gotos { id: -# time_ms: # } ")},
        {"more than 1000 gotos", Times(1'001, "gotos { id: -# time_ms: # } ")},
        {"two gotos with id 1", "gotos { id: 1 time_ms: 5 } gotos { id: 1 time_ms: 6 }"},
        {"two gotos at 5 ms", "gotos { id: 1 time_ms: 5 } gotos { id: 2 time_ms: 5 }"},
        {"stored", "volume: 65535"},
        {"a volume of 65536", "volume: 65536"},
        {"stored", Times(64, "volume: 1 ")},
        {"volumes of more than 64", Times(65, "volume: 1 ")},
        {"an asset without a path", pinned("assets {}")},
        {"stored", pinned(Times(64, "assets { full_path: 'a' } "))},
        {"more than 64 assets", pinned(Times(65, "assets { full_path: 'a' } "))},
        {"stored", Times(256, "tab_order { tab_id: # } ")},
        {"more than 256 tabs", Times(257, "tab_order { tab_id: # } ")},
        {"two places in tab 0", Times(2, "tab_order {} ")},
        {"stored", pinned("assets { full_path: '" + Times(500'000, "x") + "' }")},
        {"larger than 524288", pinned("assets { full_path: '" + Times(524'280, "x") + "' }")},
    };
    for (const auto& [verdict, fields] : cases) {
        SCOPED_TRACE(verdict);
        Preset preset;
        ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(fields, &preset));
        EXPECT_THAT(Verdict(preset), testing::HasSubstr(verdict));
    }
}

TEST(PresetRules, TheLargestPresetThatCanBeMadeCanBeEdited) {
    Preset preset = PresetWith(0, "a");
    const auto fill = [&](std::size_t bytes) {
        preset.mutable_canvases(0)->mutable_assets(0)->set_full_path(std::string(bytes, 'x'));
        return preset.ByteSizeLong();
    };
    const std::size_t largest = ZorvicUnit::MaxPresetBytes - 2;  // the entry of tab 0 comes on top
    std::size_t bytes = largest - (fill(largest) - largest);
    EXPECT_EQ(fill(bytes), largest);
    EXPECT_EQ(Verdict(preset), "stored");
    preset.set_pk(10'000);
    EXPECT_EQ(Verdict(preset), "stored");
    fill(bytes + 1);
    EXPECT_THAT(Verdict(preset), testing::HasSubstr("larger than 524288"));
}

TEST(PresetRules, AMaskWritesItsFieldsAndNoOthers) {
    Preset stored = PresetWith(1, "a");
    stored.set_loop(3);
    stored.add_volume(7);
    Preset sent = PresetWith(9, "b");
    sent.set_link(5);
    google::protobuf::FieldMask mask;
    for (const char* name : {"loop", "volume", "canvases"})
        mask.add_paths(name);
    ZorvicUnit::MergeFields(stored, sent, mask);
    EXPECT_EQ(stored.SerializeAsString(), PresetWith(1, "b").SerializeAsString());
    for (const char* name : {"pk", "canvases.index", "nonsense", ""}) {
        mask.clear_paths();
        mask.add_paths(name);
        EXPECT_THROW(ZorvicUnit::MergeFields(stored, sent, mask), ZorvicUnit::Fault) << name;
    }
}

}  // namespace
