#include "fault.h"
#include "playback/playback.h"
#include "unit/unitfakes.h"

#include <gmock/gmock.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

using ZorvicUnit::Envelope;
using ZorvicUnit::Fault;
using ZorvicUnit::Playback;
using ZorvicUnit::PlayPosition;

namespace {

constexpr auto Clip = "C:\\Assets\\clip.mov";
constexpr std::int32_t ClipMS = 10'000;

class PlaybackTest : public ::testing::Test {
protected:
    PlaybackTest() { Catalog.Durations[Clip] = ClipMS; }

    void Put(const zorvic::v1::Preset& preset) { Play.Put(std::make_shared<const zorvic::v1::Preset>(preset)); }
    void Put(std::int32_t pk, std::int32_t link = 0) {
        auto preset = PresetWith(pk, Clip);
        preset.set_link(link);
        Put(preset);
    }
    void Pass(std::int64_t milliseconds) {
        Time.Pass(milliseconds);
        Play.Advance();
    }
    std::optional<PlayPosition> At(std::int32_t pk) const {
        for (const PlayPosition& position : Play.Positions()) {
            if (position.PK == pk) return position;
        }
        return std::nullopt;
    }
    /// Remaining time; -1 when it does not play.
    std::int32_t Remaining(std::int32_t pk) const { return At(pk) ? At(pk)->RemainingMS : -1; }

    FakeClock Time;
    FakeCatalog Catalog;
    Playback Play{Time, Catalog};
};

struct TrimCase {
    std::int32_t In, Out;
    std::int32_t Starts;  ///< remaining time of the first frame
    std::int32_t PassMS;
};

TEST_F(PlaybackTest, PointsThatMakeNoSenseAreIgnored) {
    const std::vector<TrimCase> cases = {
        {0, 0, 10'000, 10'000},        {8'000, 2'000, 8'000, 6'000},  {10'000, 0, 10'000, 10'000},
        {2'000, 2'000, 10'000, 8'000}, {1'000, 2'000, 10'000, 8'000}, {10'001, 0, 10'000, 10'000},
        {-5, -5, 10'000, 10'000},      {0, 10'000, 10'000, 10'000},   {3'000, 20'000, 3'000, 3'000},
    };
    for (const TrimCase& trim : cases) {
        SCOPED_TRACE(testing::Message() << "in " << trim.In << " out " << trim.Out);
        auto preset = PresetWith(1, Clip);
        preset.set_in_position(trim.In);
        preset.set_out_position(trim.Out);
        Put(preset);
        Play.Take(1);
        EXPECT_EQ(Remaining(1), trim.Starts);
        Pass(trim.PassMS - 1);
        EXPECT_TRUE(Play.StateOf(1).Playing);
        Pass(1);
        EXPECT_FALSE(Play.StateOf(1).Playing);
    }
}

TEST_F(PlaybackTest, FollowsLoopsThenFreezeThenLink) {
    struct Case {
        std::int32_t Loop;
        bool Freeze;
        std::int32_t AfterMS;
        std::uint32_t Pass;
        std::int32_t Remaining, Linked;  ///< -1: does not play
    };
    const std::vector<Case> cases = {
        {0, false, 7'000, 0, -1, 9'000},   // one pass of 6 s, then the linked preset, 1 s into it
        {2, false, 13'000, 3, 7'000, -1},  // third pass, 1 s into it
        {2, false, 19'000, 0, -1, 9'000},  // three passes
        {0, true, 60'000, 1, 2'000, -1},   // held at the out point
        {1, true, 60'000, 2, 2'000, -1},   // held after the second pass
        {-1, true, 6'000'500, 1001, 7'500, -1}, {-7, false, 7'000, 0, -1, 9'000},  // no number of loops
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(testing::Message() << "loop " << expected.Loop << " freeze " << expected.Freeze);
        Play.Clear();
        Put(2);
        auto preset = PresetWith(1, Clip);
        preset.set_in_position(8'000);
        preset.set_out_position(2'000);
        preset.set_loop(expected.Loop);
        preset.set_freeze_at_end(expected.Freeze);
        preset.set_link(2);
        Put(preset);
        Play.Take(1);
        Pass(expected.AfterMS);  // one late tick for all that happened in between
        EXPECT_EQ(Play.StateOf(1).CurrentLoop, expected.Pass);
        EXPECT_EQ(Remaining(1), expected.Remaining);
        EXPECT_EQ(Remaining(2), expected.Linked);
        EXPECT_EQ(Play.StateOf(1).Paused, expected.Freeze && expected.Loop >= 0);
    }
}

TEST_F(PlaybackTest, LinksToItselfAndInCirclesGoOnWithoutDrift) {
    Put(1, 1);
    Put(2, 3);
    Put(3, 2);
    Play.Take(1);
    Play.Take(2);
    for (int tick = 0; tick < 1000; ++tick)
        Pass(53);  // 53 s
    EXPECT_EQ(Remaining(1), 7'000);
    EXPECT_EQ(Remaining(2), -1);
    EXPECT_EQ(Remaining(3), 7'000);
}

TEST_F(PlaybackTest, PresetsWithoutLengthArePassedAndNeverSpin) {
    zorvic::v1::Preset empty;
    for (const auto& [pk, link] : std::vector<std::pair<int, int>>{{1, 2}, {2, 1}, {3, 4}, {4, 5}, {6, 77}, {7, 7}}) {
        empty.set_pk(pk);
        empty.set_link(link);
        Put(empty);
    }
    Put(5);
    for (const std::int32_t pk : {1, 6, 7})
        Play.Take(pk);
    EXPECT_TRUE(Play.Positions().empty());
    Play.Take(3);
    EXPECT_EQ(Remaining(5), ClipMS);

    empty.set_pk(8);
    empty.set_loop(-1);
    Put(empty);
    Play.Take(8);
    Pass(1'000);
    EXPECT_TRUE(Play.StateOf(8).Playing);  // endless, with nothing in it
}

TEST_F(PlaybackTest, TakeResumesAPausedPresetAndRestartsAPlayingOne) {
    Put(1);
    EXPECT_THROW(Play.Pause(1), Fault);
    Play.Take(1);
    Pass(3'000);
    Play.Pause(1);
    Pass(5'000);
    EXPECT_EQ(Remaining(1), 7'000);
    EXPECT_FALSE(Play.Rolling());
    Play.Take(1);
    Pass(1'000);
    EXPECT_EQ(Remaining(1), 6'000);
    Play.Take(1);
    EXPECT_EQ(Remaining(1), ClipMS);
    Play.End(1);
    EXPECT_FALSE(Play.StateOf(1).Playing);

    auto held = PresetWith(2, Clip);
    held.set_freeze_at_end(true);
    Put(held);
    Play.Take(2);
    Pass(ClipMS);
    Play.Pause(2);  // nothing left to play
    EXPECT_TRUE(Play.StateOf(2).Paused);
    Play.Take(2);
    EXPECT_EQ(Remaining(2), ClipMS);
}

TEST_F(PlaybackTest, SeeksAreClampedAndCueAStoppedPreset) {
    auto preset = PresetWith(1, Clip);
    preset.set_out_position(2'000);
    Put(preset);
    Play.Seek(1, 4'000);
    EXPECT_EQ(Remaining(1), -1);
    Play.Take(1);
    EXPECT_EQ(Remaining(1), 4'000);
    Play.Seek(1, 999'999);
    EXPECT_EQ(Remaining(1), ClipMS);
    Play.Seek(1, static_cast<std::uint32_t>(-50));  // remaining time 0: past the out point
    EXPECT_EQ(Remaining(1), -1);
    Play.Seek(1, static_cast<std::uint32_t>(-50));  // must not make the next take end at once
    Play.Take(1);
    EXPECT_EQ(Remaining(1), ClipMS);
    Play.End(1);
    Play.Seek(1, 3'000);
    Play.End(1);
    Play.Take(1);
    EXPECT_EQ(Remaining(1), ClipMS);
}

TEST_F(PlaybackTest, EditsTakeEffectWhilePlaying) {
    auto preset = PresetWith(1, Clip);
    preset.set_link(2);
    Put(preset);
    Put(2);
    Play.Take(1);
    Pass(3'000);
    preset.set_out_position(5'000);
    preset.set_loop(1);
    Put(preset);
    Pass(2'500);
    EXPECT_EQ(Play.StateOf(1).CurrentLoop, 2U);
    EXPECT_EQ(Remaining(1), 9'500);
    preset.set_loop(0);
    preset.set_out_position(9'800);  // behind the head: ends now, not in the past
    Put(preset);
    EXPECT_EQ(Remaining(1), -1);
    EXPECT_EQ(Remaining(2), ClipMS);
}

TEST_F(PlaybackTest, AnAssetOfUnknownLengthWaitsAndThenPlaysFromTheInPoint) {
    const std::vector<std::string> changed{"late.mov"};
    auto preset = PresetWith(1, "late.mov");
    preset.set_in_position(8'000);
    Put(preset);
    Play.Take(1);
    Pass(60'000);
    EXPECT_EQ(Remaining(1), 0);
    EXPECT_FALSE(Play.Rolling());
    Catalog.Durations["late.mov"] = 9'000;
    Play.MediaChanged(changed);
    EXPECT_EQ(Play.StateOf(1).TRT, 9'000);
    Pass(1'000);
    EXPECT_EQ(Remaining(1), 7'000);

    Catalog.Durations.clear();  // the file is being replaced: what plays goes on
    Play.MediaChanged(changed);
    Pass(1'000);
    EXPECT_EQ(Remaining(1), 6'000);
    Catalog.Durations["late.mov"] = 19'000;
    Play.MediaChanged(changed);
    EXPECT_EQ(Remaining(1), 16'000);
    Play.End(1);
    Catalog.Durations.clear();
    Play.MediaChanged(changed);
    EXPECT_EQ(Play.StateOf(1).TRT, 0);
}

TEST_F(PlaybackTest, LevelsFollowEnvelopeVolumeAndFades) {
    auto envelope = std::make_shared<Envelope>();
    envelope->Levels.assign(static_cast<std::size_t>(ClipMS / Envelope::StepMS), {80, 40});
    Catalog.Envelopes[Clip] = envelope;
    auto preset = PresetWith(1, Clip);
    preset.add_volume(65'535);
    preset.add_volume(32'768);
    preset.set_fade_in_ms(2'000);
    preset.set_fade_out_ms(1'000);
    preset.set_loop(1);
    Put(preset);
    const auto levels = [this](std::int64_t after) {
        Pass(after);
        return At(1)->Levels;
    };
    Play.Take(1);
    EXPECT_THAT(levels(0), testing::ElementsAre(0, 0));
    EXPECT_THAT(levels(1'000), testing::ElementsAre(40, 10));
    EXPECT_THAT(levels(5'000), testing::ElementsAre(80, 20));
    EXPECT_THAT(levels(3'500), testing::ElementsAre(80, 20));  // the end of the first pass does not fade
    EXPECT_THAT(levels(500), testing::ElementsAre(80, 20));
    EXPECT_THAT(levels(9'750), testing::ElementsAre(20, 5));
    Play.Pause(1);
    EXPECT_THAT(levels(0), testing::ElementsAre(0, 0));
}

TEST_F(PlaybackTest, WhatIsBeingDeletedDoesNotBeginToPlay) {
    Put(1, 2);
    Put(2);
    Play.Take(1);
    EXPECT_THROW(Play.SetRetired(1, true), Fault);
    EXPECT_THROW(Play.HoldAsset(Clip), Fault);
    Play.SetRetired(2, true);
    EXPECT_THROW(Play.Take(2), Fault);
    Pass(ClipMS);
    EXPECT_TRUE(Play.Positions().empty());
    Play.SetRetired(2, false);
    Play.HoldAsset(Clip);
    EXPECT_THROW(Play.Take(2), Fault);
    Play.ReleaseAsset(Clip);
    Play.Take(2);
    EXPECT_EQ(Remaining(2), ClipMS);
}

}  // namespace
