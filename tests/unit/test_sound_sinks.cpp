#include "files/regular_file.h"
#include "media/envelope.h"
#include "render/sound/device_sink.h"
#include "render/sound/wav_sink.h"
#include "support/childprocess.h"
#include "unit/unitfakes.h"

#include <sys/wait.h>

#include <cmath>
#include <csignal>
#include <cstring>
#include <random>

namespace ZorvicRender {
namespace {

using std::chrono::milliseconds;

TEST(DriftControl, HoldsADeviceOfAnyCrystalOnTheClockForTwentyMinutes) {
    for (const double crystal : {200e-6, -200e-6}) {
        DriftControl control;
        std::mt19937 random(7);
        std::normal_distribution<double> jitter(0, 0.002);
        double error = 0.004, speed = 0, sum = 0, worst = 0, lastMinute = 0;
        constexpr double Step = 0.01, Minutes = 20;
        constexpr int Steps = static_cast<int>(Minutes * 60 / Step);
        for (int i = 0; i < Steps; ++i) {
            error += (crystal - speed) * Step;
            const auto steering = control.Update(error + jitter(random), Step);
            ASSERT_FALSE(steering.Leap);
            speed = steering.Speed;
            sum += std::abs(error);
            worst = std::max(worst, std::abs(error));
            if (i >= Steps - 6000) lastMinute += error / 6000;
        }
        EXPECT_LT(sum / Steps, 0.001);
        EXPECT_LT(worst, 0.006);
        EXPECT_LT(std::abs(lastMinute), 0.0002) << "a trend";
    }
}

/// A device with a crystal of its own that plays while time goes by, and can be unplugged.
class FakeDevice final : public PcmDevice {
public:
    explicit FakeDevice(FakeClock& clock) : Time(clock) {}
    void Pass(std::int64_t ms) {
        Time.Pass(ms);
        Queued -= SampleRate * Crystal * static_cast<double>(ms) / 1000;
    }
    void Open() override {
        ++Opened;
        if (Unplugged) throw ZorvicUnit::Fault(ZorvicUnit::FaultKind::NotFound, "no such device");
        Queued = 0;
    }
    void Close() override {}
    State WaitForRoom(milliseconds limit, bool& room) override {
        for (milliseconds waited(0); Queued > 2400 && waited < limit; ++waited)
            Pass(1);
        room = Queued <= 2400;
        return Now();
    }
    State Delay(long& frames) override {
        frames = std::lround(Queued);
        return Now();
    }
    State Write(const float* frames, std::size_t count) override {
        if (Now() == State::Gone) return State::Gone;
        Queued = std::max(Queued, 0.0) + static_cast<double>(count);
        Played.insert(Played.end(), frames, frames + count * Channels);
        return State::Fine;
    }
    std::string Name() const override { return "fake"; }

    FakeClock& Time;
    double Crystal = 1.0002;
    double Queued = 0;
    bool Unplugged = false;
    int Opened = 0;
    std::vector<float> Played;

private:
    State Now() const { return Unplugged ? State::Gone : Queued < 0 ? State::Broken : State::Fine; }
};

TEST(DeviceSink, StaysOnTheClockThroughStallsAndComesBackAfterLoss) {
    FakeClock clock;
    auto owned = std::make_unique<FakeDevice>(clock);
    FakeDevice& device = *owned;
    DeviceSink sink(std::move(owned), clock);
    std::int64_t next = 0;
    const Mix mix = [&](std::int64_t first, int frames, float* out) {
        next = first + frames;
        std::fill_n(out, static_cast<std::size_t>(frames) * Channels, 0.5F);
    };
    // How much later than its time what was mixed last will have sounded.
    const auto offset = [&] { return static_cast<double>(SampleAt(clock.Now()) - next) + device.Queued; };
    const auto play = [&](int turns) {
        for (int i = 0; i < turns; ++i)
            sink.Turn(mix);
    };
    play(3'000);
    EXPECT_LT(std::abs(offset()), 240);
    EXPECT_EQ(sink.Figures().Underruns, 0U);

    device.Pass(500);  // the whole program stood still
    play(100);
    EXPECT_EQ(sink.Figures().Underruns, 1U);
    EXPECT_LT(std::abs(offset()), 240);

    const std::size_t again = device.Played.size();
    // Off by more than steering can mend, in both directions: one leap without a click.
    for (const double frames : {4'000.0, -1'500.0}) {
        device.Queued += frames;
        play(300);
        EXPECT_LT(std::abs(offset()), 240);
    }
    for (std::size_t i = again; i < device.Played.size(); ++i)
        ASSERT_LT(std::abs(device.Played[i] - device.Played[i - Channels]), 0.5F / RampFrames * 1.5F);

    device.Unplugged = true;
    sink.Turn(mix);
    const std::int64_t lost = next;
    for (int i = 0; i < 250; ++i) {
        clock.Pass(10);
        sink.Turn(mix);
    }
    EXPECT_EQ(device.Opened, 3);
    EXPECT_GT(next, lost + 2 * SampleRate) << "the show goes on unheard";
    device.Unplugged = false;
    clock.Pass(1'000);
    play(100);
    EXPECT_LT(std::abs(offset()), 240);
}

// Plays on a sink of its own until it is killed.
pid_t StartWriter(const std::string& file, rlim_t limit) {
    const pid_t child = fork();
    if (child != 0) return child;
    std::signal(SIGXFSZ, SIG_IGN);
    const FileSizeLimit most(limit);
    WavSink sink(file);
    for (;;) {
        sink.Turn([](std::int64_t, int frames, float* out) {
            std::fill_n(out, static_cast<std::size_t>(frames) * Channels, 0.5F);
        });
    }
}

TEST(WavSink, LeavesAReadableFileWhenKilledAndSurvivesAFullDisk) {
    const TemporaryDirectory directory;
    for (const rlim_t limit : {RLIM_INFINITY, rlim_t{100'000}}) {
        const std::string file = directory.Path() + "/" + std::to_string(limit) + ".wav";
        const pid_t child = StartWriter(file, limit);
        // What the head claims; a full disk holds less.
        const auto claimed = [&] {
            const std::string head = ReadFile(file).substr(0, 44);
            std::uint32_t bytes = 0;
            if (head.size() == 44) std::memcpy(&bytes, head.data() + 40, sizeof bytes);
            return bytes;
        };
        EXPECT_TRUE(WaitUntil([&] { return claimed() > 150'000; }));
        EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "still plays";
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const auto heard = ZorvicUnit::ReadEnvelope(ZorvicUnit::OpenRegularFile(file), file,
                                                    ZorvicUnit::ReadLimit::Within(std::chrono::seconds(10)));
        ASSERT_TRUE(heard);
        EXPECT_GT(heard->Levels.size(), limit == RLIM_INFINITY ? 15U : 8U);
        EXPECT_GT(heard->Levels.at(3)[0], 85);
    }
}

}  // namespace
}  // namespace ZorvicRender
