#include "mirror.h"

#include "events.h"
#include "link_error.h"
#include "scripted_unit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

using namespace Zorvic::Internal;

namespace {

/// What the list says, by the number of the preset.
using Contents = std::map<int, int>;

Contents PresetsOf(const UnitState& state) {
    Contents presets;
    for (const auto& preset : *state.Presets)
        presets[preset->PK] = std::stoi(preset->Name);
    EXPECT_EQ(presets.size(), state.Presets->size()) << "a preset is listed twice";
    return presets;
}

/// The presets as a unit would have them, changed at random.
struct Model {
    explicit Model(unsigned seed) : Random(seed) {}

    int Below(int limit) { return std::uniform_int_distribution(0, limit - 1)(Random); }

    Wire::Piece Change() {
        const int pk = Below(30) + 1;
        if (Below(3) > 0) {
            const int name = Presets[pk] = Below(1000);
            return PresetPiece({NamedPreset(pk, std::to_string(name))});
        }
        Presets.erase(pk);
        Wire::Piece piece;
        piece.mutable_presets()->add_removed(pk);
        return piece;
    }

    std::mt19937 Random;
    Contents Presets;
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
        ++revision;
        for (int part = model.Below(3); part > 0; --part) {
            EXPECT_EQ(mirror.Apply(MakeFrame(revision, {model.Change()}, false, true)), 0U);
            ASSERT_EQ(mirror.Current(), before) << "half a revision shows";
        }
        EXPECT_NE(mirror.Apply(MakeFrame(revision, {model.Change(), model.Change()})), 0U);
        const auto after = mirror.Current();
        ASSERT_EQ(after->Revision, revision);
        ASSERT_EQ(PresetsOf(*after), model.Presets);
        ASSERT_EQ(PresetsOf(*before), presetsBefore);
        for (const auto& [pk, name] : model.Presets)
            ASSERT_EQ(FindPreset(*after->Presets, pk)->Name, std::to_string(name));
    }
}

TEST(Mirror, SnapshotInPiecesReplacesEverythingAndShowsWhenItIsComplete) {
    Mirror mirror("");
    mirror.Apply(MakeFrame(5, {IdentityPiece("unit-1"), PresetPiece({NamedPreset(9, "90")})}, true));
    const auto states = [](int pk) {
        Wire::Piece piece;
        piece.mutable_states()->add_states()->set_pk(pk);
        return piece;
    };
    const auto first =
        MakeFrame(7, {IdentityPiece("unit-1"), PresetPiece({NamedPreset(2, "20")}), states(2)}, true, true);
    EXPECT_EQ(mirror.Apply(first), 0U);
    EXPECT_EQ(PresetsOf(*mirror.Current()), (Contents{{9, 90}}));
    EXPECT_EQ(mirror.Apply(MakeFrame(7, {PresetPiece({NamedPreset(1, "10")}), states(1)}, true)), AllEvents);
    EXPECT_EQ(PresetsOf(*mirror.Current()), (Contents{{1, 10}, {2, 20}}));
    ASSERT_EQ(mirror.Current()->PresetStates->size(), 2U);
    EXPECT_EQ(mirror.Current()->PresetStates->front().PK, 1);
    EXPECT_EQ(mirror.Apply(MakeFrame(8, {states(4)})), EventBit(Zorvic::ZORVIC_STATE_PRESETSTATES));
    EXPECT_EQ(mirror.Current()->PresetStates->size(), 1U) << "outside a snapshot states replace what was there";
    EXPECT_EQ(mirror.Apply(MakeFrame(9, {Wire::Piece()})), 0U) << "a kind that only a newer library knows";
}

TEST(Mirror, AssetsAreKeptByTheirPath) {
    Mirror mirror("");
    mirror.Apply(MakeFrame(5, {IdentityPiece("unit-1")}, true));
    Wire::Piece piece;
    for (const char* path : {"b.mov", "a.mov", "b.mov"})
        piece.mutable_assets()->add_upserted()->set_full_path(path);
    EXPECT_EQ(mirror.Apply(MakeFrame(6, {piece})), EventBit(Zorvic::ZORVIC_STATE_ASSETS));
    ASSERT_EQ(mirror.Current()->Assets->size(), 2U);
    piece.Clear();
    piece.mutable_assets()->add_removed("a.mov");
    mirror.Apply(MakeFrame(7, {piece}));
    ASSERT_EQ(mirror.Current()->Assets->size(), 1U);
    EXPECT_EQ(mirror.Current()->Assets->front()->Record.FullPath, "b.mov");
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
