#pragma once

#include "media/av_types.h"
#include "media/media_file.h"
#include "render/kept_file.h"

#include <atomic>
#include <optional>

namespace ZorvicRender {

/// Decodes the sound of one file from any position. For one thread.
class SoundDecoder {
public:
    /// Throws Fault when the file cannot be read; a file without sound gives no frames.
    SoundDecoder(KeptFile& file, const std::atomic<bool>& stop);

    /// Goes far enough before this frame (48 kHz, from the start of the media) that it is decoded whole.
    void Seek(std::int64_t position);
    /// Null at the end. Packets that do not decode are left out: what they held is a gap.
    const AVFrame* Next();
    /// Where the frame begins, in its own samples from the start of the media; nothing when nobody knows.
    std::optional<std::int64_t> PositionOf(const AVFrame& frame) const;

private:
    void Open();
    bool SeekTo(std::int64_t timeStamp);
    void Rewind();
    bool ReadPacket();
    bool Needed(const AVPacket& packet) const;

    KeptFile& File;
    const std::atomic<bool>& Stop;
    std::optional<ZorvicUnit::MediaFile> Media;
    const AVStream* Stream = nullptr;
    ZorvicUnit::AvDecoder Codec;
    ZorvicUnit::AvPacket Read;  ///< not decoded yet when it holds data
    ZorvicUnit::AvFrame Decoded;
    std::int64_t Start = 0;       ///< time stamp of position 0
    std::int64_t First = 0;       ///< of the first packet, at most Start
    std::int64_t NeededFrom = 0;  ///< packets that end before this time stamp are not decoded
    bool Fresh = true;            ///< just opened: nothing has been decoded yet
    bool Draining = false;
};

}  // namespace ZorvicRender
