#include "render/sound/device_sink.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <thread>
#include <vector>

namespace ZorvicRender {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds Patience(20);
constexpr std::chrono::seconds RetryEvery(1);

// Silence that a device begins with: while it plays, its delay tells when the first sound will be heard.
constexpr std::size_t FirstSilence = 3 * BlockFrames;

// Some devices take whatever is written. No more than this goes ahead of the clock.
constexpr std::int64_t MostAheadFrames = SampleRate / 5;

double SecondsBetween(TimePoint from, TimePoint until) {
    return std::chrono::duration<double>(until - from).count();
}

float RampAt(std::size_t frame) {
    return std::min(1.F, static_cast<float>(frame + 1) / RampFrames);
}

template <typename Sound>
void Scale(Sound& block, std::size_t frame, float factor) {
    for (std::size_t channel = 0; channel < Channels; ++channel)
        block[frame * Channels + channel] *= factor;
}

}  // namespace

DeviceSink::DeviceSink(std::unique_ptr<PcmDevice> device, const ZorvicUnit::Clock& clock)
    : Device(std::move(device)), Time(clock) {
    Device->Open();
}

void DeviceSink::Turn(const Mix& mix) {
    if (Lost) return TurnUnheard(mix);
    if (!Playing && !Begin()) return;
    const TimePoint soon = TimeOf(Next - MostAheadFrames);
    if (soon > Time.Now()) return std::this_thread::sleep_for(milliseconds(10));
    bool room = false;
    if (!Note(Device->WaitForRoom(Patience, room)) || !room) return;
    const auto error = ErrorNow();
    if (!error) return;
    const TimePoint now = Time.Now();
    Feed(mix, Drift.Update(*error, SecondsBetween(Asked, now)));
    Asked = now;
    Seen.OffsetUS = static_cast<std::int32_t>(Drift.Error() * 1e6);
}

// The first frame that is mixed is the one whose time it is when it sounds.
bool DeviceSink::Begin() {
    const std::vector<float> silence(FirstSilence * Channels);
    Converter.Restart();
    Drift.Restart();
    long delay = 0;
    if (!Note(Device->Write(silence.data(), FirstSilence)) || !Note(Device->Delay(delay))) return false;
    Asked = Time.Now();
    Next = SampleAt(Asked) + delay;
    return Playing = FadeIn = true;
}

// False when the device does not go on as it was.
bool DeviceSink::Note(PcmDevice::State state) {
    if (state == PcmDevice::State::Fine) return true;
    Playing = false;
    if (state == PcmDevice::State::Broken)
        ++Seen.Underruns;
    else
        Lose("it is gone");
    return false;
}

void DeviceSink::Lose(const std::string& why) {
    if (!Lost) {
        spdlog::error("no sound on {}: {}; trying again every second", Device->Name(), why);
        Next = std::max(Next, SampleAt(Time.Now()));
    }
    Lost = true;
    Device->Close();
    RetryAt = Time.Now() + RetryEvery;
}

void DeviceSink::TurnUnheard(const Mix& mix) {
    if (Time.Now() >= RetryAt) return TryAgain();
    if (TimeOf(Next) > Time.Now()) return std::this_thread::sleep_for(milliseconds(5));
    Next = std::max(Next, SampleAt(Time.Now()) - SampleRate);
    Block unheard;
    Pull(mix, unheard);
}

void DeviceSink::TryAgain() {
    try {
        Device->Open();
        Lost = false;
        spdlog::info("sound on {} again", Device->Name());
    } catch (const std::exception& error) {
        Lose(error.what());
    }
}

// How much later than its time the next frame will sound.
std::optional<double> DeviceSink::ErrorNow() {
    long delay = 0;
    if (!Note(Device->Delay(delay))) return std::nullopt;
    const double sounds =
        static_cast<double>(delay) - (static_cast<double>(Next - SampleAt(Time.Now())) - Converter.Held());
    return sounds / SampleRate;
}

void DeviceSink::Feed(const Mix& mix, const DriftControl::Steering& steering) {
    const auto leap = static_cast<std::int64_t>(std::lround(steering.Leap.value_or(0) * SampleRate));
    if (leap < 0) return Pause(mix, -leap, steering.Speed);
    Block block;
    if (leap > 0)
        LeapForward(mix, leap, block);
    else
        Pull(mix, block);
    for (std::size_t frame = 0; FadeIn && frame < RampFrames; ++frame)
        Scale(block, frame, RampAt(frame));
    FadeIn = false;
    Send(block, BlockFrames, steering.Speed);
}

void DeviceSink::Pull(const Mix& mix, Block& block) {
    mix(Next, BlockFrames, block.data());
    Next += BlockFrames;
}

void DeviceSink::LeapForward(const Mix& mix, std::int64_t frames, Block& block) {
    std::array<float, std::size_t{RampFrames} * Channels> before;
    mix(Next, RampFrames, before.data());
    Next += frames;
    Pull(mix, block);
    for (std::size_t frame = 0; frame < RampFrames; ++frame) {
        Scale(block, frame, RampAt(frame));
        Scale(before, frame, 1 - RampAt(frame));
    }
    std::transform(before.begin(), before.end(), block.begin(), block.begin(), std::plus<>());
}

// The sound stands still for a while: its last block fades out, and it goes on after the silence.
void DeviceSink::Pause(const Mix& mix, std::int64_t frames, double speed) {
    Block block;
    Pull(mix, block);
    for (std::size_t frame = 0; frame < RampFrames; ++frame)
        Scale(block, BlockFrames - 1 - frame, RampAt(frame) - 1.F / RampFrames);
    Send(block, BlockFrames, speed);
    for (block.fill(0); frames > 0 && Playing; frames -= BlockFrames)
        Send(block, static_cast<int>(std::min<std::int64_t>(frames, BlockFrames)), speed);
    FadeIn = true;
}

void DeviceSink::Send(const Block& block, int frames, double speed) {
    const std::vector<float>& sound = Converter.Convert(block.data(), frames, speed);
    Note(Device->Write(sound.data(), sound.size() / Channels));
}

}  // namespace ZorvicRender
