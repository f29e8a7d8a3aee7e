#pragma once

#include "render/sound/sound_reader.h"

#include <array>
#include <memory>

namespace ZorvicRender {

/// The sound of one file for one run: a reader that is heard, and a spare that waits where the run will jump to.
class SoundSource {
public:
    explicit SoundSource(std::shared_ptr<KeptFile> file);

    /// A reader for a voice that begins at this position: the spare when it waits there, else one that is sent there.
    /// Null when both are lent already.
    SoundReader* Borrow(std::int64_t position);
    void Return(const SoundReader* reader);
    /// Lets a free reader wait at this position. Called again and again.
    void Prime(std::int64_t position);
    /// Opens the file for the spare before anybody knows where it will be wanted.
    void OpenSpare();

    /// A free reader can begin here at once.
    bool Ready(std::int64_t position) const;
    bool Silent() const { return Slots.front().Reader->Silent(); }

private:
    struct Slot {
        std::unique_ptr<SoundReader> Reader;
        bool Lent = false;
    };
    Slot* FreeSlot(std::int64_t position);

    const std::shared_ptr<KeptFile> File;
    std::array<Slot, 2> Slots;
};

}  // namespace ZorvicRender
