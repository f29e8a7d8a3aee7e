#include "fault.h"
#include "playback/playback.h"
#include "unit/unitfakes.h"

#include <gmock/gmock.h>
#include <google/protobuf/text_format.h>

#include <algorithm>
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

    /// Puts preset 1, which shows the clip, with these fields in the text form of the wire's messages.
    void Put(const std::string& fields = {}) {
        auto preset = std::make_shared<zorvic::v1::Preset>(PresetWith(1, Clip));
        ASSERT_TRUE(google::protobuf::TextFormat::MergeFromString(fields, preset.get())) << fields;
        Play.Put(preset);
    }
    void Pass(std::int64_t milliseconds) {
        Time.Pass(milliseconds);
        Play.Advance();
    }
    /// Remaining time; -1 when it does not play.
    std::int32_t Remaining(std::int32_t pk) const {
        const auto positions = Play.Positions();
        const auto found = std::ranges::find(positions, pk, &PlayPosition::PK);
        return found == positions.end() ? -1 : found->RemainingMS;
    }

    FakeClock Time;
    FakeCatalog Catalog;
    Playback Play{Time, Catalog};
};

TEST_F(PlaybackTest, PointsThatMakeNoSenseAreIgnored) {
    struct Case {
        std::int32_t In, Out;
        std::int32_t Starts;  ///< remaining time of the first frame
        std::int32_t PassMS;
    };
    const std::vector<Case> cases = {
        {0, 0, 10'000, 10'000},        {8'000, 2'000, 8'000, 6'000},  {10'000, 0, 10'000, 10'000},
        {2'000, 2'000, 10'000, 8'000}, {1'000, 2'000, 10'000, 8'000}, {10'001, 0, 10'000, 10'000},
        {-5, -5, 10'000, 10'000},      {0, 10'000, 10'000, 10'000},   {3'000, 20'000, 3'000, 3'000},
    };
    for (const auto& [in, out, starts, passMS] : cases) {
        const auto fields = "in_position: " + std::to_string(in) + " out_position: " + std::to_string(out);
        SCOPED_TRACE(fields);
        Put(fields);
        Play.Take(1);
        EXPECT_EQ(Remaining(1), starts);
        Pass(passMS - 1);
        EXPECT_TRUE(Play.StateOf(1).Playing);
        Pass(1);
        EXPECT_FALSE(Play.StateOf(1).Playing);
    }
}

TEST_F(PlaybackTest, FollowsLoopsThenFreezeThenLink) {
    struct Case {
        std::string Fields;
        std::int32_t AfterMS;
        std::uint32_t Pass;
        std::int32_t Remaining, Linked;  ///< -1: does not play
        bool Paused;
    };
    const std::vector<Case> cases = {
        {"", 7'000, 0, -1, 9'000, false},                     // one pass of 6 s, then the linked preset, 1 s into it
        {"loop: 2", 13'000, 3, 7'000, -1, false},             // third pass, 1 s into it
        {"loop: 2", 19'000, 0, -1, 9'000, false},             // three passes
        {"freeze_at_end: true", 60'000, 1, 2'000, -1, true},  // held at the out point
        {"loop: 1 freeze_at_end: true", 60'000, 2, 2'000, -1, true},  // held after the second pass
        {"loop: -1 freeze_at_end: true", 6'000'500, 1001, 7'500, -1, false},
        {"loop: -7", 7'000, 0, -1, 9'000, false},  // no number of loops
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.Fields);
        Play.Clear();
        Put("pk: 2");
        Put("in_position: 8000 out_position: 2000 link: 2 " + expected.Fields);
        Play.Take(1);
        Pass(expected.AfterMS);  // one late tick for all that happened in between
        EXPECT_EQ(Play.StateOf(1).CurrentLoop, expected.Pass);
        EXPECT_EQ(Remaining(1), expected.Remaining);
        EXPECT_EQ(Remaining(2), expected.Linked);
        EXPECT_EQ(Play.StateOf(1).Paused, expected.Paused);
    }
}

TEST_F(PlaybackTest, LinksToItselfAndInCirclesGoOnWithoutDrift) {
    for (const auto* fields : {"pk: 1 link: 1", "pk: 2 link: 3", "pk: 3 link: 2"})
        Put(fields);
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
        Play.Put(std::make_shared<zorvic::v1::Preset>(empty));
    }
    Put("pk: 5");
    for (const std::int32_t pk : {1, 6, 7})
        Play.Take(pk);
    EXPECT_TRUE(Play.Positions().empty());
    Play.Take(3);
    EXPECT_EQ(Remaining(5), ClipMS);

    empty.set_loop(-1);
    Play.Put(std::make_shared<zorvic::v1::Preset>(empty));
    Play.Take(7);
    Pass(1'000);
    EXPECT_TRUE(Play.StateOf(7).Playing);  // endless, with nothing in it
}

TEST_F(PlaybackTest, TakeResumesAPausedPresetAndRestartsAPlayingOne) {
    Put();
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

    Put("freeze_at_end: true");
    Pass(ClipMS);
    Play.Pause(1);  // nothing left to play
    EXPECT_TRUE(Play.StateOf(1).Paused);
    Play.Take(1);
    EXPECT_EQ(Remaining(1), ClipMS);
    Play.End(1);
    EXPECT_FALSE(Play.StateOf(1).Playing);
}

TEST_F(PlaybackTest, SeeksAreClampedAndCueAStoppedPreset) {
    Put("out_position: 2000");
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
    Put("link: 2");
    Put("pk: 2");
    Play.Take(1);
    Pass(3'000);
    Put("link: 2 out_position: 5000 loop: 1");
    Pass(2'500);
    EXPECT_EQ(Play.StateOf(1).CurrentLoop, 2U);
    EXPECT_EQ(Remaining(1), 9'500);
    Put("link: 2 out_position: 9800");  // behind the head: ends now, not in the past
    EXPECT_EQ(Remaining(1), -1);
    EXPECT_EQ(Remaining(2), ClipMS);
}

TEST_F(PlaybackTest, AnAssetOfUnknownLengthWaitsAndThenPlaysFromTheInPoint) {
    const auto becomes = [this](std::optional<std::int32_t> duration) {
        Catalog.Durations.erase(Clip);
        if (duration) Catalog.Durations[Clip] = *duration;
        Play.MediaChanged(std::vector<std::string>{Clip});
    };
    becomes(std::nullopt);
    Put("in_position: 8000");
    Play.Take(1);
    Pass(60'000);
    EXPECT_EQ(Remaining(1), 0);
    EXPECT_FALSE(Play.Rolling());
    becomes(9'000);
    Pass(1'000);
    EXPECT_EQ(Remaining(1), 7'000);
    becomes(std::nullopt);  // the file is being replaced: what plays goes on
    Pass(1'000);
    EXPECT_EQ(Remaining(1), 6'000);
    becomes(19'000);
    EXPECT_EQ(Remaining(1), 16'000);
    Play.End(1);
    becomes(std::nullopt);
    EXPECT_EQ(Play.StateOf(1).TRT, 0);
}

TEST_F(PlaybackTest, LevelsFollowEnvelopeVolumeAndFades) {
    auto envelope = std::make_shared<Envelope>();
    envelope->Levels.assign(static_cast<std::size_t>(ClipMS / Envelope::StepMS), {80, 40});
    Catalog.Envelopes[Clip] = envelope;
    Put("volume: 65535 volume: 32768 fade_in_ms: 2000 fade_out_ms: 1000 loop: 1");
    const auto levels = [this](std::int64_t after) {
        Pass(after);
        return Play.Positions().at(0).Levels;
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
    Put("link: 2");
    Put("pk: 2");
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
