#include "mirror.h"

#include "events.h"
#include "link_error.h"
#include "scripted_unit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace Zorvic::Internal;

namespace {

Wire::Preset NamedPreset(int pk, const std::string& name) {
    Wire::Preset preset;
    preset.set_pk(pk);
    preset.set_name(name);
    return preset;
}

Wire::Piece AssetPiece(const std::map<std::string, int>& upserted, const std::vector<std::string>& removed) {
    Wire::Piece piece;
    for (const auto& [path, size] : upserted) {
        Wire::Asset& asset = *piece.mutable_assets()->add_upserted();
        asset.set_full_path(path);
        asset.set_total_size(size);
    }
    for (const auto& path : removed)
        piece.mutable_assets()->add_removed(path);
    return piece;
}

std::map<int, std::string> PresetsOf(const UnitState& state) {
    std::map<int, std::string> presets;
    for (const auto& preset : *state.Presets)
        presets[preset->PK] = preset->Name;
    EXPECT_EQ(presets.size(), state.Presets->size()) << "a preset is listed twice";
    return presets;
}

std::map<std::string, int> AssetsOf(const UnitState& state) {
    std::map<std::string, int> assets;
    for (const auto& asset : *state.Assets)
        assets[asset->Record.FullPath] = static_cast<int>(asset->Record.TotalSize);
    EXPECT_EQ(assets.size(), state.Assets->size()) << "an asset is listed twice";
    return assets;
}

/// The lists as a unit would have them, changed at random.
struct Model {
    explicit Model(unsigned seed) : Random(seed) {}

    int Below(int limit) { return std::uniform_int_distribution(0, limit - 1)(Random); }

    Wire::Piece ChangePresets() {
        const int pk = Below(30) + 1;
        if (Below(3) == 0) {
            Presets.erase(pk);
            return PresetPiece({}, {pk});
        }
        Presets[pk] = "Preset " + std::to_string(Below(1000));
        return PresetPiece({NamedPreset(pk, Presets[pk])});
    }
    Wire::Piece ChangeAssets() {
        const std::string path = "C:\\Assets\\" + std::to_string(Below(30)) + ".mov";
        if (Below(3) == 0) {
            Assets.erase(path);
            return AssetPiece({}, {path});
        }
        Assets[path] = Below(1000);
        return AssetPiece({{path, Assets[path]}}, {});
    }
    Wire::Piece Change() { return Below(2) == 0 ? ChangePresets() : ChangeAssets(); }

    std::mt19937 Random;
    std::map<int, std::string> Presets;
    std::map<std::string, int> Assets;
};

}  // namespace

TEST(Mirror, EqualsTheUnitAfterEveryRevisionAndNeverChangesWhatItHandedOut) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Model model(seed);
    Mirror mirror("");
    std::uint64_t revision = 1;
    mirror.Apply(MakeFrame(revision, {IdentityPiece("unit-1")}, true));
    for (int step = 0; step < 2000; ++step) {
        const auto before = mirror.Current();
        const auto presetsBefore = model.Presets;
        const auto assetsBefore = model.Assets;
        ++revision;
        for (int part = model.Below(3); part > 0; --part) {
            EXPECT_EQ(mirror.Apply(MakeFrame(revision, {model.Change()}, false, true)), 0U);
            ASSERT_EQ(mirror.Current(), before) << "half a revision shows";
        }
        EXPECT_NE(mirror.Apply(MakeFrame(revision, {model.Change(), model.Change()})), 0U);
        const auto after = mirror.Current();
        ASSERT_EQ(after->Revision, revision);
        ASSERT_EQ(PresetsOf(*after), model.Presets);
        ASSERT_EQ(AssetsOf(*after), model.Assets);
        ASSERT_EQ(PresetsOf(*before), presetsBefore);
        ASSERT_EQ(AssetsOf(*before), assetsBefore);
        for (const auto& [pk, name] : model.Presets)
            ASSERT_EQ(FindPreset(*after->Presets, pk)->Name, name);
    }
}

TEST(Mirror, SnapshotInPiecesReplacesEverythingAndShowsWhenItIsComplete) {
    Mirror mirror("");
    mirror.Apply(MakeFrame(5, {IdentityPiece("unit-1"), PresetPiece({NamedPreset(9, "Gone")})}, true));
    Wire::Piece states[2];
    states[0].mutable_states()->add_states()->set_pk(2);
    states[1].mutable_states()->add_states()->set_pk(1);

    EXPECT_EQ(mirror.Apply(
                  MakeFrame(7, {IdentityPiece("unit-1"), PresetPiece({NamedPreset(2, "B")}), states[0]}, true, true)),
              0U);
    EXPECT_EQ(PresetsOf(*mirror.Current()), (std::map<int, std::string>{{9, "Gone"}}));
    EXPECT_EQ(mirror.Apply(MakeFrame(7, {PresetPiece({NamedPreset(1, "A")}), states[1]}, true)), AllEvents);
    EXPECT_EQ(PresetsOf(*mirror.Current()), (std::map<int, std::string>{{1, "A"}, {2, "B"}}));
    ASSERT_EQ(mirror.Current()->PresetStates->size(), 2U);
    EXPECT_EQ(mirror.Current()->PresetStates->front().PK, 1);

    Wire::Piece newStates;
    newStates.mutable_states()->add_states()->set_pk(4);
    EXPECT_EQ(mirror.Apply(MakeFrame(8, {newStates})), EventBit(Zorvic::ZORVIC_STATE_PRESETSTATES));
    EXPECT_EQ(mirror.Current()->PresetStates->size(), 1U) << "outside a snapshot states replace what was there";
}

TEST(Mirror, TellsWhichKindChanged) {
    Mirror mirror("");
    mirror.Apply(MakeFrame(1, {IdentityPiece("unit-1")}, true));
    const auto changes = [&](const auto& fill) {
        Wire::Piece piece;
        fill(piece);
        return mirror.Apply(MakeFrame(2, {piece}));
    };
    EXPECT_EQ(changes([](auto& p) { p.mutable_presets(); }), EventBit(Zorvic::ZORVIC_STATE_PRESETS));
    EXPECT_EQ(changes([](auto& p) { p.mutable_assets(); }), EventBit(Zorvic::ZORVIC_STATE_ASSETS));
    EXPECT_EQ(changes([](auto& p) { p.mutable_hardware(); }), EventBit(Zorvic::ZORVIC_STATE_HWSTATE));
    EXPECT_EQ(changes([](auto& p) { p.mutable_timecodes(); }), EventBit(Zorvic::ZORVIC_STATE_TIMECODE));
    EXPECT_EQ(changes([](auto& p) { p.mutable_drives(); }), 0U);
    EXPECT_EQ(changes([](auto&) {}), 0U) << "a piece of a kind that this library does not know";
}

TEST(Mirror, RefusesWhatMakesNoSense) {
    const Wire::Frame snapshot = MakeFrame(5, {IdentityPiece("unit-1")}, true);
    EXPECT_THROW(Mirror("").Apply(MakeFrame(1, {PresetPiece({})})), LinkError) << "a change before any snapshot";
    EXPECT_THROW(Mirror("").Apply(MakeFrame(1, {}, true)), LinkError) << "a unit without identity";
    EXPECT_THROW(Mirror("unit-2").Apply(snapshot), LinkError) << "another unit";
    Mirror mirror("unit-1");
    mirror.Apply(snapshot);
    EXPECT_THROW(mirror.Apply(MakeFrame(4, {})), LinkError) << "a revision that goes back";
    Wire::Frame garbage = MakeFrame(6, {});
    garbage.add_pieces("\xff\xff\xff\xff garbage");
    EXPECT_THROW(mirror.Apply(garbage), LinkError);
    EXPECT_EQ(mirror.Current()->Revision, 5U);
}
