#pragma once

#include "files/descriptor.h"
#include "media/av_types.h"
#include "media/media_file.h"
#include "render/scene.h"

#include <atomic>
#include <string>

namespace ZorvicRender {

/// Positions on the wire are whole milliseconds: a picture that begins within this time counts as begun.
constexpr Nanoseconds PositionTolerance = std::chrono::milliseconds(1);

/// The pictures of one file, one after the other. For one thread at a time.
class PictureDecoder {
public:
    /// Takes a descriptor of its own. Ends soon after `stop` turns true. Throws Fault when the file holds no picture
    /// that can be decoded.
    PictureDecoder(ZorvicUnit::Descriptor file, const std::string& name, const std::atomic<bool>& stop);

    /// The next picture decoded is one from which this position can be reached by decoding on; of those before the
    /// position, the ones that no other needs are left out. A file that cannot be searched begins anew.
    void SeekBefore(Nanoseconds position);
    /// Decodes the next picture; null at the end, and when the file cannot be read any further. Damaged parts are
    /// passed over. The caller owns the picture.
    ZorvicUnit::AvFrame Next();

    /// When a picture begins, from the start of the media.
    Nanoseconds PositionOf(const AVFrame& frame) const;
    /// How long it lasts when nothing follows.
    Nanoseconds LengthOf(const AVFrame& frame) const;
    /// Quarter turns clockwise that the file asks for.
    int Turns() const;

private:
    bool GoTo(Nanoseconds target);
    bool Feed();
    bool IsNeeded(const AVPacket& packet) const;

    ZorvicUnit::MediaFile Media;
    const AVStream* Video;
    std::int64_t Start = 0;
    ZorvicUnit::AvDecoder Decoder;
    ZorvicUnit::AvPacket Packet;
    ZorvicUnit::AvFrame Ahead;  ///< decoded by SeekBefore(), not given out yet
    Nanoseconds Target{0};      ///< of the latest SeekBefore()
    bool Fresh = true;          ///< nothing was read yet: at the start
    bool Drained = false;
};

}  // namespace ZorvicRender
