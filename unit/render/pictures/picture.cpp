#include "render/pictures/picture.h"

#include <utility>

namespace ZorvicRender {

namespace {

constexpr std::size_t MostFree = 4;
constexpr std::size_t Slack = 64;  // the scaler writes whole vectors

}  // namespace

std::shared_ptr<Picture> PicturePool::Make(PixelSize size) {
    std::unique_ptr<Picture> picture;
    {
        const std::scoped_lock lock(Lock);
        if (!Free.empty()) {
            picture = std::move(Free.back());
            Free.pop_back();
        }
    }
    if (!picture) picture = std::make_unique<Picture>();
    picture->Size = size;
    picture->Pixels.resize(static_cast<std::size_t>(size.Width) * static_cast<std::size_t>(size.Height) * 4 + Slack);
    return {picture.release(), [pool = weak_from_this()](Picture* used) {
                std::unique_ptr<Picture> owned(used);
                const auto home = pool.lock();
                if (!home) return;
                const std::scoped_lock lock(home->Lock);
                if (home->Free.size() < MostFree) home->Free.push_back(std::move(owned));
            }};
}

}  // namespace ZorvicRender
