#pragma once

#include "files/descriptor.h"
#include "media/read_limit.h"

#include <cstddef>
#include <memory>
#include <string>

struct AVFormatContext;
struct AVPacket;
struct AVStream;

namespace ZorvicUnit {

/// What a file may have allocated at once. A few bytes can claim millions of samples, and the library makes room for
/// what is claimed. This holds the index of a film of 60 hours and a picture of 8K.
constexpr std::size_t MostAllocated = 256 * 1024 * 1024;

/// A media file opened for reading, with its streams identified. Reads this one file and nothing else: play lists that
/// name other files or addresses are refused. For one thread at a time.
class MediaFile {
public:
    /// The file's own position is left alone; the name is for messages. Throws Fault: Refused when it is not media that
    /// a unit plays, Internal when it cannot be read, Slow when the limit is reached.
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
    /// Throws Slow when reading ended because the limit was reached, Internal when the disk has failed.
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
