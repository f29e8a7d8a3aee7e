#include "render/sound/sound_source.h"

#include "render/sound/samples.h"

#include <algorithm>
#include <utility>

namespace ZorvicRender {

namespace {

// A reader waits a little before its place: rounding may ask for the frame before.
constexpr std::int64_t LeadFrames = SampleRate / 1000;

}  // namespace

SoundSource::SoundSource(std::shared_ptr<KeptFile> file) : File(std::move(file)) {
    Slots.front().Reader = std::make_unique<SoundReader>(File);
}

// One that leads to the position before any other.
SoundSource::Slot* SoundSource::FreeSlot(std::int64_t position) {
    Slot* free = nullptr;
    for (Slot& slot : Slots) {
        if (slot.Lent) continue;
        if (slot.Reader != nullptr && slot.Reader->Leads(position)) return &slot;
        if (free == nullptr || free->Reader == nullptr) free = &slot;
    }
    return free;
}

SoundReader* SoundSource::Borrow(std::int64_t position) {
    Prime(position);
    Slot* slot = FreeSlot(position);
    if (slot == nullptr) return nullptr;
    slot->Lent = true;
    return slot->Reader.get();
}

void SoundSource::Return(const SoundReader* reader) {
    for (Slot& slot : Slots)
        slot.Lent = slot.Lent && slot.Reader.get() != reader;
}

void SoundSource::Prime(std::int64_t position) {
    Slot* slot = FreeSlot(position);
    if (slot == nullptr) return;
    const bool fresh = slot->Reader == nullptr;
    if (fresh) slot->Reader = std::make_unique<SoundReader>(File);
    if (fresh || !slot->Reader->Leads(position)) slot->Reader->Start(position - LeadFrames);
}

void SoundSource::OpenSpare() {
    for (Slot& slot : Slots) {
        if (slot.Reader == nullptr) slot.Reader = std::make_unique<SoundReader>(File);
    }
}

bool SoundSource::Ready(std::int64_t position) const {
    return std::any_of(Slots.begin(), Slots.end(), [&](const Slot& slot) {
        return !slot.Lent && slot.Reader != nullptr && slot.Reader->Ready(position);
    });
}

}  // namespace ZorvicRender
