#include "render/sound/sound_reader.h"

#include "render/sound/samples.h"
#include "render/sound/sound_converter.h"
#include "render/sound/sound_decoder.h"
#include "thread_name.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <utility>

namespace ZorvicRender {

namespace {

constexpr std::int64_t ReadyFrames = SampleRate / 10;

// A full queue is filled again when this much is free, not for every block that was read.
constexpr std::size_t RefillFrames = SampleRate / 4;

}  // namespace

SoundReader::SoundReader(std::shared_ptr<KeptFile> file) : File(std::move(file)), Thread([this] { Run(); }) {}

SoundReader::~SoundReader() {
    {
        const std::lock_guard guard(Lock);
        Stop = true;
    }
    Changed.notify_all();
    Thread.join();
}

void SoundReader::Start(std::int64_t position) {
    {
        const std::lock_guard guard(Lock);
        Wanted = position;
        Started = true;
        Queue.Restart(position);
        Ended = Mute;
    }
    Changed.notify_all();
}

std::size_t SoundReader::Read(std::int64_t position, std::size_t count, float* out) {
    const std::lock_guard guard(Lock);
    Queue.DropBefore(position);
    const std::size_t there = Queue.Copy(position, count, out);
    std::fill(out + there * Channels, out + count * Channels, 0.F);
    if (Queue.Room() >= RefillFrames) Changed.notify_all();
    return Ended && position >= Queue.Begin() ? count : there;
}

bool SoundReader::Leads(std::int64_t position) const {
    const std::lock_guard guard(Lock);
    const std::int64_t ahead = position - Queue.Begin();
    return Started && ahead >= 0 && ahead <= static_cast<std::int64_t>(SoundQueue::Capacity);
}

bool SoundReader::Ready(std::int64_t position) const {
    if (!Leads(position)) return false;
    const std::lock_guard guard(Lock);
    return Ended || Queue.End() - position >= ReadyFrames;
}

void SoundReader::Run() {
    ZorvicUnit::NameThread("zr-sound-read");
    KeptFile::Watch opening(*File);
    try {
        SoundDecoder decoder(*File, Stop);
        while (const auto position = NextStart())
            Play(decoder, *position, opening);
    } catch (const std::exception& error) {
        if (!Stop) spdlog::warn("no sound: {}", error.what());
        Mute = true;
        Finish();
    }
}

std::optional<std::int64_t> SoundReader::NextStart() {
    std::unique_lock guard(Lock);
    Changed.wait(guard, [this] { return Stop || Wanted; });
    return Stop ? std::nullopt : std::exchange(Wanted, std::nullopt);
}

void SoundReader::Play(SoundDecoder& decoder, std::int64_t position, KeptFile::Watch& opening) {
    SoundConverter converter(
        [this](std::int64_t at, const float* frames, std::size_t count) { return Put(at, frames, count); });
    converter.Restart(position);
    decoder.Seek(position);
    while (const AVFrame* frame = decoder.Next()) {
        opening.Done();
        if (!converter.Add(*frame, decoder.PositionOf(*frame))) return;
    }
    if (converter.Finish()) Finish();
}

// False when something else is wanted by now.
bool SoundReader::Put(std::int64_t position, const float* frames, std::size_t count) {
    std::unique_lock guard(Lock);
    for (std::size_t done = 0; done < count;) {
        Changed.wait(guard, [this] { return Stop || Wanted || Queue.Room() > 0; });
        if (Stop || Wanted) return false;
        done += Queue.Append(position + static_cast<std::int64_t>(done), frames + done * Channels, count - done);
    }
    return true;
}

void SoundReader::Finish() {
    const std::lock_guard guard(Lock);
    Ended = !Wanted || Mute;
}

}  // namespace ZorvicRender
