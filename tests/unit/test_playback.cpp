#include "fault.h"
#include "playback/fades.h"
#include "playback/playback.h"
#include "unit/unitfakes.h"

#include <google/protobuf/text_format.h>

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
    /// Another file of that length, or of one that is not known yet.
    void Replace(std::int32_t length) {
        Catalog.Durations.erase(Clip);
        if (length > 0) Catalog.Durations[Clip] = length;
        Play.AssetsChanged(std::vector<std::string>{Clip});
    }
    /// Remaining time; -1 when it neither plays nor is cued.
    std::int32_t Remaining(std::int32_t pk) {
        const auto positions = Play.Positions();
        const auto found = std::ranges::find(positions, pk, &PlayPosition::PK);
        return found == positions.end() ? -1 : found->RemainingMS;
    }
    /// Carries out a line of steps: commands to preset 1, milliseconds to pass with one late tick at their end, and
    /// what must then be true of it and of preset 2, its link.
    void Run(const std::string& script) {
        const std::map<std::string, std::function<void(std::int64_t)>> steps = {
            {"take", [&](auto) { Play.Take(1); }},
            {"pause", [&](auto) { Play.Pause(1); }},
            {"paused!", [&](auto value) { Play.Pause(1, value == 1); }},
            {"end", [&](auto) { Play.End(1); }},
            {"seek", [&](auto value) { Play.Seek(1, static_cast<std::uint32_t>(value)); }},
            {"left", [&](auto value) { EXPECT_EQ(Remaining(1), value); }},
            {"linked", [&](auto value) { EXPECT_EQ(Remaining(2), value); }},
            {"pass", [&](auto value) { EXPECT_EQ(Play.StateOf(1).CurrentLoop, value); }},
            {"paused", [&](auto value) { EXPECT_EQ(Play.StateOf(1).Paused, value == 1); }},
            {"wait", [&](auto value) { Pass(value); }},
            {"rolling", [&](auto value) { EXPECT_EQ(Play.Rolling(), value == 1); }},
            {"hold", [&](auto value) { Play.HoldColdTakes(value == 1); }},
            {"refresh", [&](auto value) { Play.HoldColdTakes(true, std::chrono::milliseconds(value)); }},
            {"ready", [&](auto value) { Play.MediaReady(1, static_cast<std::uint64_t>(value)); }},
            {"primed",
             [&](auto value) {
                 Play.SetPrimed({{1, 1, std::chrono::milliseconds(value)}});
             }},
            {"length", [&](auto value) { Replace(static_cast<std::int32_t>(value)); }},
        };
        std::istringstream words(script);
        for (std::string word; words >> word;) {
            SCOPED_TRACE(word);
            const auto equals = word.find('=');
            steps.at(word.substr(0, equals))(equals == word.npos ? 0 : std::stoll(word.substr(equals + 1)));
        }
    }
    void RunAll(const std::vector<std::pair<std::string, std::string>>& cases) {
        for (const auto& [fields, script] : cases) {
            SCOPED_TRACE(fields + " | " + script);
            Play.Clear();
            Put("pk: 2");
            Put(fields);
            Run(script);
        }
    }

    FakeClock Time;
    FakeCatalog Catalog;
    Playback Play{Time, Catalog};
};

TEST_F(PlaybackTest, PlaysByItsFieldsAndCommands) {
    const std::string window = "in_position: 8000 out_position: 2000 link: 2 ";
    const std::vector<std::pair<std::string, std::string>> cases = {
        // Points that make no sense are ignored.
        {"", "take left=10000 wait=9999 pass=1 wait=1 pass=0"},
        {"in_position: 8000 out_position: 2000", "take left=8000 wait=5999 pass=1 wait=1 pass=0"},
        {"in_position: 10000", "take left=10000 wait=9999 pass=1 wait=1 pass=0"},
        {"in_position: 1000 out_position: 2000", "take left=10000 wait=7999 pass=1 wait=1 pass=0"},
        {"in_position: -5 out_position: -5", "take left=10000 wait=9999 pass=1 wait=1 pass=0"},
        {"in_position: 3000 out_position: 20000", "take left=3000 wait=2999 pass=1 wait=1 pass=0"},
        // First the loops, then the freeze, then the link.
        {window, "take wait=7000 pass=0 left=-1 linked=9000"},
        {window + "loop: 2", "take wait=13000 pass=3 left=7000 linked=-1 wait=6000 pass=0 linked=9000"},
        {window + "freeze_at_end: true", "take wait=60000 pass=1 left=2000 linked=-1 paused=1"},
        {window + "loop: 1 freeze_at_end: true", "take wait=60000 pass=2 left=2000 linked=-1 paused=1"},
        {window + "loop: -1 freeze_at_end: true", "take wait=6000500 pass=1001 left=7500 linked=-1 paused=0"},
        // Its passes are counted, not played one after the other.
        {"loop: -1 out_position: 9999", "take wait=604800000 pass=604800001 left=10000 linked=-1"},
        {window + "loop: -7", "take wait=7000 pass=0 linked=9000"},  // no number of loops
        // Take resumes a paused preset and restarts a playing one, or one with nothing left to play.
        {"", "take wait=3000 pause wait=5000 left=7000 paused=1 take wait=1000 left=6000 take left=10000"},
        {"", "take wait=3000 paused!=1 paused!=1 wait=5000 left=7000 paused!=0 paused!=0 wait=1000 left=6000 paused=0"},
        {"freeze_at_end: true", "take wait=10000 left=0 pause paused=1 take left=10000 end pass=0"},
        // Seeks are clamped, and cue a stopped preset until it is taken or ended.
        {"out_position: 2000", "seek=4000 left=4000 pass=0 take left=4000 seek=999999 left=10000 seek=-50 left=-1"},
        {"out_position: 2000", "seek=-50 left=0 take left=10000 end seek=3000 end left=-1 take left=10000"},
        {"", "seek=999999 left=10000 seek=3000 wait=5000 left=3000 take end left=-1 take left=10000"},
        // An asset of unknown length waits, and then plays from the in point.
        {"in_position: 8000",
         "length=0 take wait=60000 left=0 rolling=0 length=9000 wait=1000 left=7000 end seek=5000 length=4000 "
         "left=4000 length=0 left=0 length=10000"},
    };
    RunAll(cases);
    Play.End(1);
    EXPECT_THROW(Play.Pause(1), Fault);
}

TEST_F(PlaybackTest, ColdTakesWaitForTheirFirstPicturesButNotForLong) {
    const std::string in = "in_position: 8000";
    RunAll({
        // Where outputs light up every 20 ms, whatever is asked for moves when its picture's turn has come.
        {"link: 2",
         "refresh=20 primed=0 take wait=20 left=10000 wait=10 left=9990 seek=5007 wait=23 left=5007 wait=7 left=5000 "
         "pause take wait=20 left=5000 wait=13 left=4987 seek=3 wait=20 left=3 wait=9 linked=9998"},
        {in, "hold=1 take pass=1 paused=0 rolling=1 wait=399 left=8000 wait=1 left=8000 wait=100 left=7900"},
        {in, "take ready=2 wait=300 left=8000 ready=1 wait=100 left=7900 wait=400 left=7500"},
        {in, "primed=2000 take wait=100 left=7900 take wait=100 left=8000"},  // of the first run only
        {in, "primed=0 take wait=100 left=8000 primed=2000 wait=100 left=7900"},
        // Pictures that come for the place where it was to begin do not let it begin elsewhere.
        {"", "take seek=5000 primed=0 wait=400 left=5000 wait=100 left=4900"},
        {"", "take wait=300 pause rolling=0 wait=1000 paused=1 pause wait=1 left=9999"},
        {"", "take pause wait=300 take wait=99 left=10000 wait=2 left=9999"},
        {"", "take wait=100 end rolling=0 wait=1000 left=-1"},
        {"link: 2", "take wait=10400 linked=10000 wait=100 linked=9900"},
        {"link: 1", "take ready=1 wait=11000 left=9000 pause take wait=1000 left=8000"},
        {in, "length=0 take rolling=0 wait=300 length=9000 wait=100 left=8000 wait=100 left=7900 end"},
    });
}

TEST_F(PlaybackTest, PresetsWithNothingInThemArePassedAndNeverSpin) {
    zorvic::v1::Preset empty;
    for (const auto& [pk, link] : {std::pair(3, 4), {4, 5}, {6, 7}, {7, 6}}) {
        empty.set_pk(pk);
        empty.set_link(link);
        Play.Put(std::make_shared<zorvic::v1::Preset>(empty));
    }
    Put("pk: 5");
    Play.Take(6);
    Play.Take(3);
    EXPECT_EQ(Play.Positions().size(), 1U);
    EXPECT_EQ(Remaining(5), ClipMS);
}

TEST_F(PlaybackTest, EditsTakeEffectWhilePlaying) {
    Put("pk: 2");
    Put("link: 2");
    Run("take wait=3000");
    Put("link: 2 out_position: 5000 loop: 1");
    Run("wait=2500 pass=2 left=9500");
    Put("link: 2 out_position: 9800");  // behind the head: ends now, not in the past
    Run("left=-1 linked=10000");
}

TEST_F(PlaybackTest, AFileReplacedWhileItPlaysCountsFromTheNextTakeOn) {
    const auto envelope = [](std::uint8_t level) {
        return std::make_shared<Envelope>(Envelope{{200, {level, level}}});
    };
    for (const std::int32_t replaced : {4'000, 19'000, 0}) {
        Replace(ClipMS);
        Catalog.Envelopes[Clip] = envelope(80);
        Put("loop: 1");
        Run("take wait=3000 left=7000");
        Catalog.Envelopes[Clip] = envelope(20);
        Replace(replaced);
        Put("loop: 1 name: 'edited'");
        Run("left=7000 pause take wait=10000 pass=2 left=7000");
        EXPECT_EQ(Play.StateOf(1).TRT, ClipMS);
        EXPECT_EQ(Play.Positions().at(0).Levels[0], 80);
        Run("take left=" + std::to_string(replaced));
        EXPECT_EQ(Play.StateOf(1).TRT, replaced);
        Run("end");
    }
}

TEST_F(PlaybackTest, LevelsFollowEnvelopeVolumeAndFades) {
    Catalog.Envelopes[Clip] = std::make_shared<Envelope>(Envelope{{200, {80, 40}}});
    Put("volume: 65535 volume: 32768 fade_in_ms: 2000 dissolve_out_ms: 1000 loop: 1");
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

TEST(FadesTest, FadesGoToBlackAndDissolvesToWhatLiesBelow) {
    // In the first and the last pass, how far into it; light and opacity.
    using Case = std::tuple<const char*, bool, bool, std::int64_t, double, double>;
    for (const auto& [fields, first, last, elapsedMS, light, opacity] : std::vector<Case>{
             {"fade_in_ms: 4000", true, true, 2'000, 0.25, 1},
             {"fade_in_ms: 4 dissolve_in_ms: 2000", true, false, 1'001, 0.25, 0.0005},
             {"fade_in_ms: 4000 dissolve_in_ms: 4000", false, true, 1'000, 1, 1},
             {"fade_out_ms: 5", true, true, 9'000, 0.4, 1},  // up to 99 whole seconds, as the builder stores them
             {"fade_out_ms: 100 dissolve_out_ms: 99", false, true, 10'950, 0.5, 50 / 99.0},
             {"fade_out_ms: 5 dissolve_out_ms: 5000", true, false, 11'000, 1, 1},
             {"fade_in_ms: -1 fade_out_ms: -1", true, true, 11'000, 1, 1},
         }) {
        zorvic::v1::Preset preset;
        ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(fields, &preset));
        const ZorvicUnit::Trim window{std::chrono::seconds(1), std::chrono::seconds(11)};
        const auto gains = ZorvicUnit::FadesAt(preset, {window, std::chrono::milliseconds(elapsedMS), first, last});
        EXPECT_NEAR(gains.Light, light, 1e-9) << fields;
        EXPECT_NEAR(gains.Opacity, opacity, 1e-9) << fields;
    }
}

TEST_F(PlaybackTest, WhatIsBeingDeletedDoesNotBeginToPlay) {
    Put("link: 2");
    Put("pk: 2");
    Play.Take(1);
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
