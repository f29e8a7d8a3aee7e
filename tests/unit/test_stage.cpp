#include "unit/stage_fixture.h"

#include <mutex>
#include <random>

namespace ZorvicRender {
namespace {

constexpr Nanoseconds PictureTime = milliseconds(40);

// With reordered pictures and far key frames; and with key frames only.
const std::map<std::string, std::string> Encoders = {
    {"long.mp4", "-c:v libx264 -preset veryfast -g 150 -bf 2 -qp 20"},
    {"stream.ts", "-c:v libx264 -preset veryfast -g 50 -bf 2 -qp 20"},
    {"intra.mov", "-c:v mjpeg -q:v 2 -strict unofficial"},
};

class NumberedStageTest : public StageTest {
protected:
    static std::filesystem::path Clip(const std::string& name) {
        static const TemporaryDirectory directory;
        const auto file = directory / name;
        EXPECT_TRUE(std::filesystem::exists(file) || EncodeNumbered(Encoders.at(name), 200, file));
        return file;
    }
    void Prime(const zorvic::render::Layer& layer) {
        zorvic::render::Outlook outlook;
        outlook.set_until(At(std::chrono::hours(1)).time_since_epoch().count());
        *outlook.add_primed() = layer;
        Playing = NextScene(Playing, outlook);
        EXPECT_TRUE(WaitUntil([&] {
            Stagehand.Follow(Playing, At(milliseconds(0)), Tick);
            EXPECT_TRUE(Stagehand.Shown(0).empty());
            return !Stagehand.ReadyRuns(Playing, At({})).empty();
        }));
    }
};

TEST_F(NumberedStageTest, ShowsEachPictureForItsTimeWhateverTheMomentOfTheTake) {
    int pk = 0;
    for (const auto& [name, encoder] : Encoders) {
        for (const auto begin : {milliseconds(0), milliseconds(1), milliseconds(11), milliseconds(19)}) {
            SCOPED_TRACE(name + " taken " + std::to_string(begin.count()) + " ms after a tick");
            auto layer = Layer(++pk, {Clip(name)});
            AddSpan(layer, begin, milliseconds(5000), {}, true);
            Show({layer});
            std::vector<int> numbers;
            for (Nanoseconds moment = Tick; moment < milliseconds(2000); moment += Tick)
                numbers.push_back(NumberAt(moment));
            for (std::size_t i = 0; i + 1 < numbers.size(); ++i)
                ASSERT_EQ(numbers[i], static_cast<int>(i + (numbers[1] != numbers[0] ? 1 : 0)) / 2) << "tick " << i;
        }
    }
    EXPECT_EQ(Stagehand.Counted().Dropped, 0U);
}

// Or a take would wait for its limit, however soon its picture is there.
TEST_F(NumberedStageTest, TellsThatARunThatIsHeldCanBegin) {
    auto held = Layer(1, {Clip(Encoders.begin()->first)});
    AddSpan(held, {}, milliseconds(400), milliseconds(80), false);
    AddSpan(held, milliseconds(400), milliseconds(4000), milliseconds(80), true);
    Show({held}, milliseconds(4000));
    EXPECT_EQ(NumberAt({}), 2);
    const auto ready = Stagehand.ReadyRuns(Playing, At({}));
    ASSERT_EQ(ready.size(), 1U);
    EXPECT_EQ(ready[0].Position, milliseconds(80));
    EXPECT_TRUE(Stagehand.ReadyRuns(Playing, At(milliseconds(500))).empty());
}

// All at once they would keep each other from being in time.
TEST_F(NumberedStageTest, GetsReadyFirstWhatBeginsFirst) {
    struct Openings {
        std::mutex Lock;
        std::vector<std::string> Told;
    };
    const auto openings = std::make_shared<Openings>();
    zorvic::render::Outlook outlook;
    for (const auto& [name, begin] : {std::pair("third", 3), {"first", 1}, {"second", 2}}) {
        auto layer = Layer(begin, {Clip("long.mp4")});
        AddSpan(layer, std::chrono::seconds(begin), std::chrono::seconds(begin + 1), 140 * PictureTime, true);
        layer.mutable_media(0)->set_path(name);
        layer.mutable_preset()->mutable_canvases(0)->mutable_assets(0)->set_full_path(name);
        *outlook.add_layers() = layer;
    }
    Playing = NextScene({}, outlook, [openings](const std::string& name, bool done) {
        const std::scoped_lock lock(openings->Lock);
        openings->Told.push_back(name + (done ? " can begin" : " is opened"));
    });
    EXPECT_TRUE(WaitUntil([&] {
        Stagehand.Follow(Playing, At({}), Tick);
        const std::scoped_lock lock(openings->Lock);
        return openings->Told.size() == 6;
    }));
    EXPECT_THAT(openings->Told, testing::ElementsAre("first is opened", "first can begin", "second is opened",
                                                     "second can begin", "third is opened", "third can begin"));
}

TEST_F(NumberedStageTest, LoopsWithoutAMissingOrRepeatedPicture) {
    int pk = 0;
    for (const auto& [name, encoder] : Encoders) {
        SCOPED_TRACE(name);
        constexpr int First = 30;
        constexpr int Pictures = 25;
        const Nanoseconds start = First * PictureTime;
        const Nanoseconds length = Pictures * PictureTime;
        auto layer = Layer(++pk, {Clip(name)});
        for (int pass = 0; pass < 4; ++pass)
            AddSpan(layer, pass * length, (pass + 1) * length, start, true, start, start + length);
        Show({layer});
        for (int tick = 0; tick < 4 * Pictures * 2; ++tick)
            ASSERT_EQ(NumberAt(tick * Tick), First + tick / 2 % Pictures) << "tick " << tick;
    }
    EXPECT_EQ(Stagehand.Counted().Dropped, 0U);
}

TEST_F(NumberedStageTest, SeeksToTheExactPictureAndKeepsTheOldOneUntilThen) {
    std::minstd_rand random(20261122);
    int pk = 0;
    for (const auto& [name, encoder] : Encoders) {
        SCOPED_TRACE(name);
        ++pk;
        Nanoseconds now{0};
        for (int jump = 0; jump < 25; ++jump) {
            const int wanted = static_cast<int>(random() % 200);
            const bool moves = jump % 3 == 0;
            auto layer = Layer(pk, {Clip(name)});
            AddSpan(layer, now, now + std::chrono::minutes(1),
                    wanted * PictureTime + milliseconds(moves ? 0 : random() % 40), moves);
            Show({layer});
            Stagehand.Follow(Playing, At(now), Tick);
            ASSERT_TRUE(jump == 0 || !Stagehand.Shown(0).empty()) << "black in between";
            ASSERT_EQ(NumberAt(now), wanted) << "jump " << jump;
            now += milliseconds(500);
        }
    }
}

TEST_F(NumberedStageTest, StaysWithinItsWindowAndHoldsTheLastPicture) {
    const Nanoseconds end = 100 * PictureTime;
    auto layer = Layer(1, {Clip("long.mp4")});
    AddSpan(layer, milliseconds(0), milliseconds(110), end - milliseconds(110), true, {}, end);
    AddSpan(layer, milliseconds(110), std::chrono::minutes(1), end, false, {}, end);
    Show({layer});
    for (Nanoseconds moment = milliseconds(40); moment < milliseconds(200); moment += milliseconds(5))
        EXPECT_LE(NumberAt(moment), 99);
    EXPECT_EQ(NumberAt(milliseconds(500)), 99);

    // Brought back by a new renderer in this state.
    auto again = Layer(2, {Clip("long.mp4")});
    AddSpan(again, milliseconds(0), std::chrono::minutes(1), end, false, {}, end);
    Show({again});
    EXPECT_EQ(NumberAt(milliseconds(20)), 99);

    // A file shorter than the preset holds its last picture.
    auto beyond = Layer(3, {Clip("long.mp4")});
    AddSpan(beyond, milliseconds(0), std::chrono::minutes(1), std::chrono::seconds(9), true);
    Show({beyond});
    EXPECT_EQ(NumberAt(milliseconds(20)), 199);
}

TEST_F(NumberedStageTest, BeginsWhereItWasGotReady) {
    auto primed = Layer(1, {Clip("long.mp4")});
    AddSpan(primed, milliseconds(0), std::chrono::hours(1), 40 * PictureTime, false);
    Prime(primed);
    auto taken = Layer(1, {Clip("long.mp4")});
    AddSpan(taken, milliseconds(1005), std::chrono::hours(1), 40 * PictureTime, true);
    Show({taken});
    Stagehand.Follow(Playing, At(milliseconds(1020)), Tick);
    ASSERT_FALSE(Stagehand.Shown(0).empty()) << "the first tick after the take shows it";
    EXPECT_EQ(NumberAt(milliseconds(1020)), 40);
}

TEST_F(NumberedStageTest, BeginsWithTheFileOfTheMomentAndStaysWithIt) {
    const TemporaryDirectory directory;
    std::filesystem::copy_file(Clip("intra.mov"), directory / "a.mov");
    ASSERT_TRUE(EncodeNumbered("-c:v mjpeg -strict unofficial", 5, directory / "short.mov"));
    ASSERT_TRUE(EncodeNumbered("-c:v mjpeg -strict unofficial", 9, directory / "later.mov"));
    auto layer = Layer(1, {directory / "a.mov"});
    AddSpan(layer, milliseconds(0), std::chrono::hours(1), 40 * PictureTime, false);
    Prime(layer);
    std::filesystem::rename(directory / "short.mov", directory / "a.mov");
    Prime(layer);
    Show({layer});
    EXPECT_EQ(NumberAt(milliseconds(20)), 4) << "the last picture of the new one";
    std::filesystem::rename(directory / "later.mov", directory / "a.mov");
    Show({layer});
    EXPECT_EQ(NumberAt(milliseconds(40)), 4);
}

TEST_F(StageTest, AMissingOrBrokenFileLeavesOthersAlone) {
    const TemporaryDirectory directory;
    ASSERT_TRUE(EncodeNumbered("-c:v mjpeg -strict unofficial", 5, directory / "good.mov"));
    ZorvicUnit::WriteFile(directory / "broken.mov", "no film");
    std::vector<zorvic::render::Layer> layers;
    for (const auto* name : {"good.mov", "broken.mov", "missing.mov"}) {
        layers.push_back(Layer(static_cast<int>(layers.size()) + 1, {directory / name}));
        AddSpan(layers.back(), milliseconds(0), milliseconds(1000), {}, true);
    }
    Show(layers);
    WaitUntil([&] {
        Stagehand.Follow(Playing, At(milliseconds(60)), Tick);
        return Troubles.size() >= 2;
    });
    EXPECT_EQ(NumberAt(milliseconds(80)), 2);
    EXPECT_EQ(Troubles.size(), 2U);
}

}  // namespace
}  // namespace ZorvicRender
