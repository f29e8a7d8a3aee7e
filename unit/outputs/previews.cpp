#include "outputs/previews.h"

#include "fault.h"

#include <utility>

namespace ZorvicUnit {

namespace {

bool LookTheSame(const Previews::Picture& shown, const zorvic::render::PreviewPicture& next) {
    return shown.RGB && shown.Width == next.width() && shown.Height == next.height() && shown.Signal == next.signal() &&
           *shown.RGB == next.rgb();
}

}  // namespace

void Previews::SetListener(std::function<void()> listener) {
    const std::scoped_lock lock(Lock);
    Listener = std::move(listener);
}

bool Previews::Wanted() const {
    const std::scoped_lock lock(Lock);
    return !Watchers.empty();
}

void Previews::Put(zorvic::render::PreviewPicture picture) {
    const std::scoped_lock lock(Lock);
    // On its way when the last watcher went: the next one must not take it for a new one.
    if (Watchers.empty()) return;
    Slot& slot = Slots[picture.output()];
    slot.Number = ++Last;
    if (!LookTheSame(slot.Newest, picture)) {
        slot.Content = slot.Number;
        slot.Newest = {.Output = picture.output(),
                       .Width = picture.width(),
                       .Height = picture.height(),
                       .RGB = std::make_shared<const std::string>(std::move(*picture.mutable_rgb())),
                       .Signal = picture.signal(),
                       .At = {}};
    }
    slot.Newest.At = TimePoint(std::chrono::nanoseconds(picture.at()));
    Changed.notify_all();
}

void Previews::Close() {
    const std::scoped_lock lock(Lock);
    Closed = true;
    Changed.notify_all();
}

Previews::Watcher::Watcher(Previews& previews) : Source(previews) {
    const std::scoped_lock lock(Source.Lock);
    if (!Source.Listener) throw Fault(FaultKind::Refused, "this unit has no outputs");
    if (Source.Watchers.size() >= MaxWatchers) throw Fault(FaultKind::Refused, "too many watch the outputs");
    Source.Watchers.insert(this);
    if (Source.Watchers.size() > 1) return;
    Source.Slots.clear();
    Source.Listener();
}

Previews::Watcher::~Watcher() {
    const std::scoped_lock lock(Source.Lock);
    Source.Watchers.erase(this);
    if (Source.Watchers.empty() && Source.Listener) Source.Listener();
}

std::optional<std::vector<Previews::Picture>> Previews::Watcher::Next(std::chrono::milliseconds limit) {
    std::unique_lock lock(Source.Lock);
    const auto anyNew = [this] {
        for (const auto& [output, slot] : Source.Slots)
            if (slot.Number > Seen) return true;
        return false;
    };
    Source.Changed.wait_for(lock, limit, [&] { return Source.Closed || anyNew(); });
    if (Source.Closed) return std::nullopt;
    std::vector<Picture> pictures;
    for (const auto& [output, slot] : Source.Slots) {
        if (slot.Number <= Seen) continue;
        pictures.push_back(slot.Newest);
        pictures.back().Unchanged = slot.Content <= Seen;
    }
    Seen = Source.Last;
    return pictures;
}

}  // namespace ZorvicUnit
