#include "fault.h"
#include "model/preset_rules.h"
#include "unit/unitfakes.h"

#include <cmath>
#include <limits>

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

void AddMark(Preset& preset, int id, int time) {
    auto* mark = preset.add_gotos();
    mark->set_id(id);
    mark->set_time_ms(time);
}

TEST(PresetRules, HoldTheLimitsToTheLastUnit) {
    struct Case {
        const char* Verdict;
        std::function<void(Preset&)> Edit;
    };
    const auto canvases = [](int count, std::uint32_t outputs) {
        return [=](Preset& preset) {
            preset.clear_canvases();
            for (int index = 0; index < count; ++index) {
                preset.add_canvases()->set_index(static_cast<std::uint32_t>(index));
                preset.mutable_canvases(0)->set_num_outputs(outputs);
            }
        };
    };
    const auto marks = [](int count) {
        return [=](Preset& preset) {
            for (int id = count; id > 0; --id)
                AddMark(preset, id, -id);
        };
    };
    const auto paths = [](std::size_t bytes) {
        return [=](Preset& preset) {
            preset.mutable_canvases(0)->mutable_assets(0)->set_full_path(std::string(bytes, 'x'));
        };
    };
    const auto pinned = [](int count) {
        return [=](Preset& preset) {
            while (preset.canvases(0).assets_size() < count)
                preset.mutable_canvases(0)->add_assets()->set_full_path("b");
        };
    };
    const auto tabs = [](int count) {
        return [=](Preset& preset) {
            for (int id = 0; id < count; ++id)
                preset.add_tab_order()->set_tab_id(id);
        };
    };
    const std::vector<Case> cases = {
        {"stored", [](Preset& p) { p.set_name(std::string(256, 'x')); }},
        {"the name of more than 256", [](Preset& p) { p.set_name(std::string(257, 'x')); }},
        {"the name is not valid UTF-8", [](Preset& p) { p.set_name("\xC3("); }},
        {"not valid UTF-8", [](Preset& p) { p.set_notes("cut \xE2\x82"); }},
        {"not valid UTF-8", [](Preset& p) { p.mutable_canvases(0)->mutable_assets(0)->set_full_path("\xC0\x80"); }},
        {"stored", [](Preset& p) { p.set_notes(std::string(65'536, 'x')); }},
        {"the notes of more than 65536", [](Preset& p) { p.set_notes(std::string(65'537, 'x')); }},
        {"stored", canvases(16, 4)},
        {"more than 16 canvases", canvases(17, 0)},
        {"need 4294967295 players", canvases(2, std::numeric_limits<std::uint32_t>::max())},
        {"order of their index", [](Preset& p) { p.add_canvases(); }},
        {"not a finite number", [](Preset& p) { p.mutable_canvases(0)->mutable_assets(0)->set_hue(std::nanf("")); }},
        {"stored", marks(1'000)},
        {"more than 1000 gotos", marks(1'001)},
        {"two gotos with id 1", [](Preset& p) { AddMark(p, 1, 5), AddMark(p, 1, 6); }},
        {"two gotos at 5 ms", [](Preset& p) { AddMark(p, 1, 5), AddMark(p, 2, 5); }},
        {"stored", [](Preset& p) { p.add_volume(65'535); }},
        {"a volume of 65536", [](Preset& p) { p.add_volume(65'536); }},
        {"stored", [](Preset& p) { p.mutable_volume()->Resize(64, 1); }},
        {"volumes of more than 64", [](Preset& p) { p.mutable_volume()->Resize(65, 1); }},
        {"an asset without a path", paths(0)},
        {"stored", pinned(64)},
        {"more than 64 assets", pinned(65)},
        {"stored", tabs(256)},
        {"more than 256 tabs", tabs(257)},
        {"two places in tab 0", [](Preset& p) { p.add_tab_order(), p.add_tab_order(); }},
        {"stored", paths(500'000)},
        {"larger than 524288", paths(524'280)},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.Verdict);
        Preset preset = PresetWith(1, "a");
        expected.Edit(preset);
        EXPECT_THAT(Verdict(preset), testing::HasSubstr(expected.Verdict));
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
    mask.add_paths("loop");
    mask.add_paths("volume");
    mask.add_paths("canvases");
    ZorvicUnit::MergeFields(stored, sent, mask);
    Preset expected = PresetWith(1, "b");
    EXPECT_EQ(stored.SerializeAsString(), expected.SerializeAsString());
    for (const char* name : {"pk", "canvases.index", "nonsense", ""}) {
        mask.clear_paths();
        mask.add_paths(name);
        EXPECT_THROW(ZorvicUnit::MergeFields(stored, sent, mask), ZorvicUnit::Fault) << name;
    }
}

}  // namespace
