#pragma once

#include "files/descriptor.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

struct AVFormatContext;
struct AVPacket;
struct AVStream;

namespace ZorvicUnit {

/// When to give up reading a media file.
struct ReadLimit {
    std::chrono::steady_clock::time_point Deadline = std::chrono::steady_clock::time_point::max();
    const std::atomic<bool>* Stop = nullptr;  ///< may be null; reading ends soon after it turns true

    static ReadLimit Within(std::chrono::milliseconds time) {
        return {std::chrono::steady_clock::now() + time, nullptr};
    }
    bool Stopped() const { return Stop != nullptr && Stop->load(); }
    bool Reached() const { return Stopped() || std::chrono::steady_clock::now() >= Deadline; }
};

/// A media file opened for reading, with its streams identified. Reads this one file and nothing else: play lists that
/// name other files or addresses are refused. For one thread at a time.
class MediaFile {
public:
    /// The path holds no link. Throws Fault: NotFound when the file cannot be opened, Refused when it is not media,
    /// Slow when the limit is reached.
    MediaFile(const std::filesystem::path& file, const ReadLimit& limit);
    /// Of a file that is open already, whose own position is left alone; the name is for messages. Throws as above.
    MediaFile(Descriptor opened, std::string name, const ReadLimit& limit);
    ~MediaFile();
    MediaFile(const MediaFile&) = delete;
    MediaFile& operator=(const MediaFile&) = delete;

    const AVFormatContext& Context() const { return *Format; }

    /// The stream to show, null without picture; the cover of an audio file is not one.
    const AVStream* Video() const;
    /// The stream to hear, null without sound.
    const AVStream* Audio() const;

    /// Packets of all other streams are dropped from here on.
    void ReadOnly(const AVStream& stream);
    /// Goes back to the start; false for a format that cannot.
    bool Rewind();
    /// Goes to a place from which the stream can be decoded up to this time stamp (in units of the stream), as far as
    /// the format knows one; false for a format that cannot.
    bool SeekBefore(const AVStream& stream, std::int64_t timeStamp);
    /// False at the end, after a fault of the file and when the limit is reached.
    bool Read(AVPacket& packet);
    /// Throws Slow when reading ended because the limit was reached.
    void CheckLimit() const;

private:
    struct Source;
    void Open();

    std::unique_ptr<Source> Input;  ///< must outlive Format, which reads through it
    AVFormatContext* Format = nullptr;
};

/// Owner of objects that libav frees through a pointer to the pointer.
template <auto Free>
struct AvFree {
    template <typename T>
    void operator()(T* object) const {
        Free(&object);
    }
};

}  // namespace ZorvicUnit
