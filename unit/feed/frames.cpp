#include "feed/frames.h"

namespace ZorvicUnit {

bool WriteFrames(const Feed::Subscription::Batch& batch, const std::function<bool(const zorvic::v1::Frame&)>& write) {
    auto piece = batch.Pieces.begin();
    do {
        zorvic::v1::Frame frame;
        frame.set_revision(batch.Revision);
        frame.set_snapshot(batch.Snapshot);
        std::size_t bytes = 0;
        while (piece != batch.Pieces.end() && (bytes == 0 || bytes + (*piece)->size() <= FrameBytes)) {
            bytes += (*piece)->size();
            frame.add_pieces(**piece);
            ++piece;
        }
        frame.set_more(piece != batch.Pieces.end());
        if (!write(frame)) return false;
    } while (piece != batch.Pieces.end());
    return true;
}

}  // namespace ZorvicUnit
