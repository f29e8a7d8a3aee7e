#include "mirror.h"

#include "events.h"
#include "link_error.h"
#include "scripted_unit.h"

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <random>
#include <string>

using namespace Zorvic::Internal;

namespace {

/// Presets by key, with what they loop: enough to tell them and their versions apart.
using Contents = std::map<int, int>;

Contents PresetsOf(const UnitState& state) {
    Contents presets;
    state.Presets->ForEach([&](const auto& preset) {
        EXPECT_TRUE(presets.empty() || presets.rbegin()->first < preset->PK) << "not in order of keys, each once";
        presets[preset->PK] = preset->Loop;
    });
    EXPECT_EQ(presets.size(), state.Presets->Size());
    return presets;
}

Wire::Piece Piece(const std::string& text) {
    return FromText<Wire::Piece>(text);
}

}  // namespace

TEST(Mirror, EqualsTheUnitAfterEveryRevisionAndNeverChangesWhatItHandedOut) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](int limit) { return std::uniform_int_distribution(0, limit - 1)(random); };
    Contents unit;
    const auto change = [&] {
        const int pk = below(400) + 1;
        if (below(3) == 0) {
            unit.erase(pk);
            return Piece("presets { removed: " + std::to_string(pk) + " }");
        }
        unit[pk] = below(1000);
        return Piece("presets { upserted { pk: " + std::to_string(pk) + " loop: " + std::to_string(unit[pk]) + " } }");
    };
    std::optional<Mirror> mirror(std::in_place, "");
    std::uint64_t revision = 1;
    mirror->Apply(MakeFrame(revision, {IdentityPiece()}, true));
    for (int step = 0; step < 2000; ++step) {
        const auto before = mirror->Current();
        const auto unitBefore = unit;
        ++revision;
        for (int part = below(3); part > 0; --part) {
            EXPECT_EQ(mirror->Apply(MakeFrame(revision, {change()}, false, true)), 0U);
            ASSERT_EQ(mirror->Current(), before) << "half a revision shows";
        }
        EXPECT_NE(mirror->Apply(MakeFrame(revision, {change(), change()})), 0U);
        const auto after = mirror->Current();
        ASSERT_EQ(after->Revision, revision);
        ASSERT_EQ(PresetsOf(*after), unit);
        ASSERT_EQ(PresetsOf(*before), unitBefore);
        for (const auto& [pk, loop] : unit)
            ASSERT_EQ(FindPreset(*after->Presets, pk)->Loop, loop);
        if (below(50) != 0) continue;
        mirror.emplace("unit-1", after);  // the link was lost, and the unit goes on
        mirror->Apply(MakeFrame(revision, {}));
    }
}

TEST(Mirror, ASnapshotReplacesEverythingWhenItIsCompleteAndChangesWhatTheyName) {
    Mirror mirror("");
    mirror.Apply(MakeFrame(5, {IdentityPiece(), Piece("presets { upserted { pk: 9 } }")}, true));
    const auto first = {IdentityPiece(), Piece("presets { upserted { pk: 2 } }"), Piece("states { states { pk: 2 } }")};
    EXPECT_EQ(mirror.Apply(MakeFrame(7, first, true, true)), 0U);
    EXPECT_EQ(PresetsOf(*mirror.Current()), (Contents{{9, 0}}));
    const auto second = {Piece("presets { upserted { pk: 1 } }"), Piece("states { states { pk: 1 } }")};
    EXPECT_EQ(mirror.Apply(MakeFrame(7, second, true)), AllEvents);
    EXPECT_EQ(PresetsOf(*mirror.Current()), (Contents{{1, 0}, {2, 0}}));
    EXPECT_EQ(mirror.Current()->PresetStates->Size(), 2U);
    EXPECT_EQ(mirror.Apply(MakeFrame(8, {Piece("states { states { pk: 4 } }")})),
              EventBit(Zorvic::ZORVIC_STATE_PRESETSTATES));
    EXPECT_EQ(mirror.Current()->PresetStates->Size(), 1U) << "outside a snapshot states replace what was there";
    mirror.Apply(MakeFrame(8, {Piece("state_change { upserted { pk: 5 trt: 7 } removed: 4 }")}));
    EXPECT_EQ(mirror.Current()->PresetStates->Size(), 1U);
    EXPECT_EQ(mirror.Current()->PresetStates->Find(5)->TRT, 7);
    const auto added =
        Piece("assets { upserted { full_path: 'b' } upserted { full_path: 'a' } upserted { full_path: 'b' } }");
    EXPECT_EQ(mirror.Apply(MakeFrame(8, {added})), EventBit(Zorvic::ZORVIC_STATE_ASSETS));
    EXPECT_EQ(mirror.Current()->Assets->Size(), 2U) << "assets are kept by their path";
    mirror.Apply(MakeFrame(9, {Piece("assets { removed: 'a' }")}));
    EXPECT_EQ(mirror.Current()->Assets->Size(), 1U);
    EXPECT_TRUE(FindAsset(*mirror.Current()->Assets, "b"));
    EXPECT_EQ(mirror.Apply(MakeFrame(9, {Wire::Piece()})), 0U) << "a kind that only a newer library knows";
}

TEST(Mirror, RefusesWhatMakesNoSense) {
    const Wire::Frame snapshot = MakeFrame(5, {IdentityPiece()}, true);
    EXPECT_THROW(Mirror("").Apply(MakeFrame(1, {Piece("presets {}")})), LinkError) << "a change before any snapshot";
    EXPECT_THROW(Mirror("").Apply(MakeFrame(1, {}, true)), LinkError) << "a unit without identity";
    EXPECT_THROW(Mirror("unit-2").Apply(snapshot), LinkError) << "another unit";
    Mirror mirror("unit-1");
    mirror.Apply(snapshot);
    EXPECT_THROW(mirror.Apply(MakeFrame(4, {})), LinkError) << "a revision that goes back";
    EXPECT_THROW(mirror.Apply(GarbageFrame(6)), LinkError);
    EXPECT_EQ(mirror.Current()->Revision, 5U);
    Mirror again("unit-1", mirror.Current());
    again.Apply(MakeFrame(2, {IdentityPiece()}, true));
    EXPECT_EQ(again.Current()->Revision, 2U) << "a unit that was started anew counts anew";
}

TEST(Mirror, BelievesTheCertificateAndNotWhatIsSaid) {
    EXPECT_THROW(Mirror("").Certify(""), LinkError) << "no certificate of a unit";
    EXPECT_THROW(Mirror("wanted").Certify("other"), LinkError);
    Mirror mirror("");
    mirror.Certify("other");
    EXPECT_THROW(mirror.Apply(MakeFrame(1, {IdentityPiece()}, true)), LinkError);
}

TEST(Mirror, TakesInNoUnitOfAnotherMajorVersion) {
    const auto told = [](const std::string& version) -> std::string {
        const auto identity = "identity { guid: 'unit-1' api_version: '" + version + "' }";
        try {
            Mirror("").Apply(MakeFrame(1, {Piece(identity)}, true));
            return "";
        } catch (const LinkError& error) {
            return error.what();
        }
    };
    for (const char* version : {"", "1.0", "1.7"})
        EXPECT_EQ(told(version), "");
    for (const char* version : {"2.0", "11.0", "nonsense"})
        EXPECT_THAT(told(version), testing::HasSubstr("speaks version " + std::string(version))) << version;
}
