#include "feed/frames.h"

#include "feed/pieces.h"

namespace ZorvicUnit {

bool WriteFrames(Feed::Subscription::Batch batch, const std::function<bool(zorvic::v1::Frame&)>& write) {
    if (batch.AllStates) batch.Pieces.push_back(WholeStates(*batch.AllStates));
    auto piece = batch.Pieces.cbegin();
    do {
        zorvic::v1::Frame frame;
        frame.set_revision(batch.Revision);
        frame.set_snapshot(batch.Snapshot);
        std::size_t bytes = 0;
        while (piece != batch.Pieces.cend() && (bytes == 0 || bytes + (*piece)->size() <= FrameBytes)) {
            bytes += (*piece)->size();
            frame.add_pieces(**piece);
            ++piece;
        }
        frame.set_more(piece != batch.Pieces.cend());
        if (!write(frame)) return false;
    } while (piece != batch.Pieces.cend());
    return true;
}

}  // namespace ZorvicUnit
