#pragma once

#include "render/kept_file.h"
#include "render/sound/sound_queue.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace ZorvicRender {

class SoundDecoder;

/// Decodes one file's sound ahead in a thread of its own, which opens the file at once. Positions are frames of 48 kHz
/// from the start of the media. Calls come from any thread and never wait for the file.
class SoundReader {
public:
    explicit SoundReader(std::shared_ptr<KeptFile> file);
    /// Waits for the thread, which may wait for a disk.
    ~SoundReader();
    SoundReader(const SoundReader&) = delete;
    SoundReader& operator=(const SoundReader&) = delete;

    void Start(std::int64_t position);
    /// Gives sound from this position and drops what lies before it; what is not there (yet) is silence. Returns for
    /// how many frames from the first the sound is right: after the media's end all are.
    std::size_t Read(std::int64_t position, std::size_t count, float* out);

    /// Reading at this position goes on with what was begun, or will as soon as that is decoded.
    bool Leads(std::int64_t position) const;
    /// Leads there, and enough is decoded to go on from there.
    bool Ready(std::int64_t position) const;
    /// The file has no sound that can be played.
    bool Silent() const { return Mute; }

private:
    void Run();
    std::optional<std::int64_t> NextStart();
    void Play(SoundDecoder& decoder, std::int64_t position, KeptFile::Watch& opening);
    bool Put(std::int64_t position, const float* frames, std::size_t count);
    void Finish();

    const std::shared_ptr<KeptFile> File;
    std::atomic<bool> Stop = false;
    std::atomic<bool> Mute = false;
    mutable std::mutex Lock;  ///< guards all up to Ended; held for copies of some milliseconds of sound at most
    std::condition_variable Changed;
    SoundQueue Queue;
    std::optional<std::int64_t> Wanted;  ///< not yet taken up by the thread
    bool Started = false;
    bool Ended = false;  ///< after what is queued the media have no more
    std::thread Thread;
};

}  // namespace ZorvicRender
