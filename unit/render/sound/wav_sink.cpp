#include "render/sound/wav_sink.h"

#include "fault.h"

#include <spdlog/spdlog.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>

namespace ZorvicRender {

namespace {

constexpr int SampleBytes = 2;
constexpr int FrameBytes = SampleBytes * Channels;
constexpr std::int64_t HeadBytes = 44;
constexpr std::int64_t MostBytes = std::numeric_limits<std::uint32_t>::max() - HeadBytes;

// A device takes its sound some time before it sounds; so does the file, and follows commands as a device would.
constexpr std::int64_t AheadFrames = 2 * BlockFrames;

// Time that was lost beyond this stays silent.
constexpr std::int64_t MostBehindFrames = SampleRate;

struct Head {
    std::array<char, 4> Riff = {'R', 'I', 'F', 'F'};
    std::uint32_t RiffBytes = 0;
    std::array<char, 8> Wave = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    std::uint32_t FormatBytes = 16;
    std::uint16_t Format = 1;
    std::uint16_t ChannelCount = Channels;
    std::uint32_t Rate = SampleRate;
    std::uint32_t BytesPerSecond = SampleRate * FrameBytes;
    std::uint16_t BlockAlign = FrameBytes;
    std::uint16_t Bits = SampleBytes * 8;
    std::array<char, 4> Data = {'d', 'a', 't', 'a'};
    std::uint32_t DataBytes = 0;
};
static_assert(sizeof(Head) == HeadBytes);

int OpenForWriting(const std::string& file, bool goesOn) {
    const int truncate = goesOn ? 0 : O_TRUNC;
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | truncate, 0644);
    if (opened >= 0) return opened;
    throw ZorvicUnit::Fault(ZorvicUnit::FaultKind::NotFound,
                            "--audio file:" + file + ": cannot write the file: " + std::strerror(errno));
}

std::int64_t NowSample() {
    return SampleAt(std::chrono::steady_clock::now());
}

}  // namespace

WavSink::WavSink(const std::string& file, TimePoint since, bool goesOn)
    : Name(file), File(OpenForWriting(file, goesOn)), First(SampleAt(since)), Next(NowSample() + AheadFrames) {
    WriteHead();
    spdlog::debug("{}: first sample at {}", Name, TimeOf(First).time_since_epoch().count());
}

WavSink::~WavSink() {
    WriteHead();
}

void WavSink::Turn(const Mix& mix) {
    std::this_thread::sleep_until(TimeOf(Next - AheadFrames));
    // Samples are written at their own time: what is left out reads as silence.
    Next = std::max(Next, NowSample() - MostBehindFrames);
    std::array<float, std::size_t{BlockFrames} * Channels> sound;
    std::array<std::int16_t, sound.size()> rounded;
    mix(Next, BlockFrames, sound.data());
    std::transform(sound.begin(), sound.end(), rounded.begin(), [](float value) {
        return static_cast<std::int16_t>(std::clamp(std::lround(value * 32768.F), -32768L, 32767L));
    });
    const std::int64_t at = (Next - First) * FrameBytes;
    if (at + static_cast<std::int64_t>(sizeof rounded) <= MostBytes)
        Write(rounded.data(), sizeof rounded, HeadBytes + at);
    const std::int64_t half = SampleRate / 2;
    if (Next / half != (Next + BlockFrames) / half) WriteHead();
    Next += BlockFrames;
}

void WavSink::WriteHead() {
    Head head;
    head.DataBytes =
        static_cast<std::uint32_t>(std::min((Next - First) * FrameBytes, MostBytes / FrameBytes * FrameBytes));
    head.RiffBytes = static_cast<std::uint32_t>(head.DataBytes + HeadBytes - 8);
    Write(&head, sizeof head, 0);
}

// Tries on after a fault: a disk may have room again.
void WavSink::Write(const void* data, std::size_t size, std::int64_t at) {
    const ssize_t written = pwrite(File.Get(), data, size, at);
    const bool failed = written != static_cast<ssize_t>(size);
    if (failed && !Failed)
        spdlog::error("cannot write sound to {}: {}", Name, std::strerror(written < 0 ? errno : ENOSPC));
    Failed = Failed || failed;
}

}  // namespace ZorvicRender
