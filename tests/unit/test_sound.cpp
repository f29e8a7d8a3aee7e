#include "render/sound/mixer.h"
#include "unit/media_samples.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <numeric>

namespace ZorvicRender {
namespace {

using std::chrono::milliseconds;
using namespace std::chrono_literals;

const TimePoint Zero = TimePoint(std::chrono::hours(30));
constexpr float Level = 0.5F;
constexpr double RoundingError = 1e-6;

double Sine(double hertz, double seconds) {
    return 0.5 * std::sin(2 * std::numbers::pi * hertz * seconds);
}

// Like itself at no other time.
const std::string MotleyFormula = "(sin(2*PI*(400*t+200*t*t))+sin(2*PI*(3000*t-300*t*t))+sin(2*PI*1737.3*t))/3";
double Motley(double t) {
    return (Sine(400 + 200 * t, t) + Sine(3000 - 300 * t, t) + Sine(1737.3, t)) / 3;
}

Span Moving(milliseconds from, milliseconds until, milliseconds position, bool planned = false) {
    return {.From = Zero + from, .Until = Zero + until, .Position = position, .Moves = true, .Planned = planned};
}

Span Standing(milliseconds from, milliseconds until, milliseconds position) {
    return {.From = Zero + from, .Until = Zero + until, .Position = position};
}

/// A mixer over one file with a clock that waits for the readers, and what was heard on both sides.
class SoundTest : public testing::Test {
protected:
    /// False when this ffmpeg lacks the encoder.
    bool Make(const char* name, const std::string& formula, int rate = 48000,
              const std::string& codec = "-c:a pcm_f32le") {
        File = Directory / name;
        return ZorvicUnit::Encode(
            "-f lavfi -i 'aevalsrc=0.5*(" + formula + "):s=" + std::to_string(rate) + ":d=3' " + codec, File);
    }
    std::shared_ptr<Layer> Run(std::uint64_t run, std::vector<Span> spans, bool endsByItself = false) const {
        auto layer = std::make_shared<Layer>();
        layer->Id = {1, run};
        layer->Preset = std::make_shared<const zorvic::v1::Preset>(Preset);
        layer->Media = {{"C:\\clip", std::make_shared<KeptFile>("C:\\clip", File.string(), nullptr)}};
        layer->Spans = std::move(spans);
        layer->EndsByItself = endsByItself;
        return layer;
    }
    void Show(const std::vector<std::shared_ptr<Layer>>& layers) { Shown.Layers.assign(layers.begin(), layers.end()); }
    void Hear(milliseconds length) {
        std::vector<float> block(std::size_t{BlockFrames} * Channels);
        for (std::int64_t end = At + SampleAt(length); At < end; At += BlockFrames) {
            if (!WaitUntil([this] { return Sounds.Settled(At); })) throw std::runtime_error("readers do not get ready");
            Sounds.Mix(Shown, At, BlockFrames, block.data());
            for (std::size_t i = 0; i < block.size(); i += Channels) {
                Left.push_back(block[i]);
                Right.push_back(block[i + 1]);
            }
        }
    }
    // A block in which the readers open, before anything is to be heard.
    void Open() {
        At = SampleAt(Zero) - BlockFrames;
        Hear(10ms);
        Left.clear();
        Right.clear();
    }
    double Worst(milliseconds from, milliseconds until, const std::function<double(double)>& ideal) const {
        double worst = 0;
        for (auto i = static_cast<std::size_t>(SampleAt(from)); i < static_cast<std::size_t>(SampleAt(until)); ++i)
            worst = std::max(worst, std::abs(Left.at(i) - ideal(static_cast<double>(i) / SampleRate)));
        return worst;
    }
    float LargestStep() const {
        float largest = std::abs(Left.front());
        for (std::size_t i = 1; i < Left.size(); ++i)
            largest = std::max(largest, std::abs(Left[i] - Left[i - 1]));
        return largest;
    }
    float HeardAt(milliseconds time) const { return Left.at(static_cast<std::size_t>(SampleAt(time))); }

    TemporaryDirectory Directory;
    std::filesystem::path File;
    zorvic::v1::Preset Preset;
    Scene Shown;
    Mixer Sounds;
    std::int64_t At = 0;
    std::vector<float> Left, Right;
};

TEST_F(SoundTest, LoopsWithoutAMissingOrDoubledSample) {
    // Half a sample of phase would be an error of 0.03.
    for (const auto& [name, rate, codec, error] : {std::tuple("sine.wav", 48000, "-c:a pcm_f32le", RoundingError),
                                                   {"slow.wav", 44100, "-c:a pcm_f32le", 1e-3},
                                                   {"sine.mp4", 48000, "-c:a aac -b:a 192k", 0.01}}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(Make(name, "sin(2*PI*1000*t)", rate, codec));
        std::vector<Span> spans;
        for (int pass = 0; pass < 100; ++pass)
            spans.push_back(Moving(pass * 123ms, (pass + 1) * 123ms, 701ms, pass > 0));
        Show({Run(1, spans)});
        Open();
        Hear(12'300ms);
        EXPECT_LT(Worst(10ms, 12'300ms, [](double t) { return Sine(1000, t); }), error);
        EXPECT_EQ(Sounds.Underruns(), 0U);
        Show({});
        Hear(20ms);
    }
}

TEST_F(SoundTest, LinksHalvesOfASineWithoutAStep) {
    ASSERT_TRUE(Make("sine.wav", "sin(2*PI*331*t)"));
    constexpr auto half = 500ms;
    // As the unit sends it: what plays and what follows.
    std::vector<std::shared_ptr<Layer>> runs;
    for (int i = 0; i < 21; ++i)
        runs.push_back(Run(static_cast<std::uint64_t>(i), {Moving(i * half, (i + 1) * half, i % 2 * half)}, true));
    Show({runs[0], runs[1]});
    Open();
    for (std::size_t i = 0; i < 20; ++i) {
        Show({runs[i], runs[i + 1]});
        Hear(half);
    }
    EXPECT_LT(Worst(0ms, 20 * half, [](double t) { return Sine(331, t); }), RoundingError);
}

// By how many samples the sound at this time differs from what the file was made from.
int LagOf(const std::vector<float>& heard, std::int64_t at, double seconds) {
    constexpr int Most = 2000, Length = SampleRate / 20;
    std::vector<double> ideal;
    for (int i = -Most; i < Length + Most; ++i)
        ideal.push_back(Motley(seconds + static_cast<double>(i) / SampleRate));
    double best = 0;
    int lag = SampleRate;
    for (int shift = -Most; shift <= Most; ++shift) {
        const double sum =
            std::inner_product(heard.begin() + at, heard.begin() + at + Length, ideal.begin() + Most - shift, 0.0);
        if (sum > best) lag = shift;
        best = std::max(best, sum);
    }
    return lag;
}

TEST_F(SoundTest, SeeksToTheSampleInEveryKindOfFile) {
    struct Case {
        const char* Name;
        int Rate;
        std::string Codec;
        int Padding = 0;  // what the encoder put before the first sample, where the file does not tell
        bool Damaged = false;
    };
    const std::string picture = "-f lavfi -i testsrc=size=64x48:rate=25:duration=3 -c:v mpeg4 -g 50 ";
    for (const Case& media : std::vector<Case>{{"clip.mp4", 48000, picture + "-c:a aac"},
                                               {"clip.mkv", 48000, picture + "-c:a aac", 1008},
                                               {"clip.m4a", 44100, "-c:a aac"},
                                               {"clip.aac", 44100, "-c:a aac", 1115},
                                               {"clip.mp3", 44100, "-c:a libmp3lame -b:a 128k"},
                                               {"vbr.mp3", 48000, "-c:a libmp3lame -q:a 4"},
                                               {"clip.flac", 44100, "-c:a flac"},
                                               {"clip.opus", 48000, "-c:a libopus"},
                                               {"clip.ogg", 44100, "-c:a libvorbis"},
                                               {"hurt.mp4", 48000, "-c:a aac", 0, true}}) {
        SCOPED_TRACE(media.Name);
        if (!Make(media.Name, MotleyFormula, media.Rate, media.Codec)) continue;
        std::string bytes = ReadFile(File);
        if (media.Damaged) bytes.replace(bytes.size() / 2, 400, 400, '\x55');
        ZorvicUnit::WriteFile(File, bytes);
        Show({Run(1, {Moving(0ms, 2000ms, 1234ms)})});
        Open();
        Hear(1500ms);
        EXPECT_NEAR(media.Damaged ? 0 : LagOf(Left, SampleRate / 20, 1.284), media.Padding, 1);
        EXPECT_NEAR(LagOf(Left, SampleRate, 2.234), media.Padding, 1);
        Show({});
        Hear(20ms);
    }
}

TEST_F(SoundTest, NothingClicksAtPauseResumeJumpAndEnd) {
    ASSERT_TRUE(Make("level.wav", "1"));
    const Span first = Moving(0ms, 100ms, 300ms);
    const Span paused = Standing(100ms, 200ms, 400ms);
    const Span resumed = Moving(200ms, 300ms, 400ms);
    const Span jumped = Moving(303ms, 2'000ms, 1'500ms);
    // Commands become known when their time has come, or when it has passed already.
    Show({Run(1, {first})});
    Open();
    Hear(100ms);
    EXPECT_EQ(Left.front(), Level / RampFrames);
    Show({Run(1, {first, paused})});
    Hear(100ms);
    EXPECT_EQ(HeardAt(104ms), Level / RampFrames * 47);
    EXPECT_EQ(HeardAt(106ms), 0);
    Show({Run(1, {first, paused, resumed})});
    Hear(110ms);
    EXPECT_EQ(HeardAt(206ms), Level);
    Show({Run(1, {first, paused, resumed, jumped})});
    Hear(90ms);
    EXPECT_EQ(HeardAt(399ms), Level);
    Show({});
    Hear(100ms);
    EXPECT_EQ(HeardAt(406ms), 0);
    // Ends by itself, and freezes: the ramp lies before the end.
    Show({Run(2, {Moving(550ms, 650ms, 0ms)}, true)});
    Hear(200ms);
    EXPECT_EQ(HeardAt(644ms), Level);
    EXPECT_EQ(HeardAt(650ms), 0);
    const auto step = LargestStep();
    EXPECT_EQ(HeardAt(550ms), Level) << "what begins with its media begins at once";
    EXPECT_EQ(step, Level);
    Left.assign(Left.begin(), Left.begin() + SampleAt(500ms));
    EXPECT_LT(LargestStep(), Level / RampFrames * 1.01F);
    EXPECT_EQ(Sounds.Underruns(), 0U);
}

TEST_F(SoundTest, FollowsVolumeAndFadesWithoutSteps) {
    ASSERT_TRUE(Make("level.wav", "1"));
    Preset.set_fade_in_ms(100);
    Preset.set_dissolve_in_ms(200);
    Preset.set_fade_out_ms(1);  // second
    Preset.add_volume(65535);
    Preset.add_volume(32768);
    Span span = Moving(0ms, 2000ms, 0ms);
    span.WindowEnd = 2000ms;
    span.FirstPass = span.LastPass = true;
    Show({Run(1, {span}, true)});
    Open();
    Hear(1600ms);
    EXPECT_NEAR(HeardAt(50ms), Level * 0.5 * 0.25, 2e-3);
    EXPECT_NEAR(HeardAt(150ms), Level * 0.75, 2e-3);
    EXPECT_NEAR(HeardAt(1500ms), Level * 0.5, 2e-3);
    EXPECT_NEAR(Right.at(SampleRate / 2), Level * 0.5, 1e-3);
    Preset.set_volume(0, 0);
    Show({Run(1, {span}, true)});
    Hear(400ms);
    EXPECT_EQ(HeardAt(1610ms), 0);
    EXPECT_LT(LargestStep(), Level / BlockFrames * 1.5F);
}

}  // namespace
}  // namespace ZorvicRender
