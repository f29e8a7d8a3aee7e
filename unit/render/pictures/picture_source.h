#pragma once

#include "render/pictures/picture_reader.h"
#include "render/reaper.h"
#include "render/scene.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ZorvicRender {

/// What the readers of all sources share.
struct PictureServices {
    PictureBudget& Budget;
    Reaper& Leftovers;
};

/// Which picture of one asset one run shows at each tick. Two readers take turns: one shows, the other is got ready for
/// the next jump, so that a loop has no gap and a seek leaves the old picture standing until the new one is exact.
class PictureSource {
public:
    struct Figures {
        std::uint64_t Dropped = 0;   ///< pictures that no tick showed, although the refresh rate has a tick for each
        std::uint64_t Repeated = 0;  ///< ticks whose picture was not ready
        std::optional<Nanoseconds>
            JumpTime;  ///< from a take or seek to its picture, when the latest Follow() showed it
    };

    PictureSource(std::shared_ptr<KeptFile> file, PictureServices services);
    ~PictureSource();
    PictureSource(const PictureSource&) = delete;
    PictureSource& operator=(const PictureSource&) = delete;

    /// Chooses the picture for this tick, and gets the next jump ready. `tick` is the time from one refresh to the
    /// next.
    void Follow(const Layer& layer, TimePoint lightUp, Nanoseconds tick);
    /// Sends a reader for what the next Follow() will need, if nothing was before.
    void Prepare(const Layer& layer, TimePoint lightUp, Nanoseconds tick);
    /// Gets ready to begin with the layer's first span.
    void Prime(const Layer& layer);
    /// How large it is drawn at most; ready pictures keep their size.
    void SetSize(PixelSize size);

    /// Null before the first one.
    const PicturePtr& Shown() const { return Current; }
    /// True when the run can begin, or will never show anything.
    bool IsReady(Nanoseconds position);
    bool HasFailed() const;
    std::string TakeProblem();
    const Figures& Counted() const { return Counts; }

private:
    struct Stretch {
        bool Moves = false;
        Nanoseconds Offset{0};
        bool operator==(const Stretch&) const = default;
    };
    struct Served {
        std::unique_ptr<PictureReader> Reader;
        std::optional<Stretch> For;
    };

    static Stretch StretchOf(const Span& span) { return {span.Moves, span.Offset()}; }
    PictureReader& Get(Served& served);
    void StartFor(Served& served, const Span& span);
    Nanoseconds Aim(const Span& span, TimePoint lightUp) const;
    void Show(Nanoseconds aim, Nanoseconds tick);
    Nanoseconds FirstAim(const Span& span, TimePoint lightUp, Nanoseconds tick) const;
    Served& Seek(const Span& span, Nanoseconds aim);
    bool SwitchTo(const Span& span, TimePoint lightUp, Nanoseconds tick);
    void CentreTicks(const Span& span, Nanoseconds aim, TimePoint lightUp, Nanoseconds tick);
    void PrepareJump(const Layer& layer, TimePoint lightUp);

    const std::shared_ptr<KeptFile> File;
    const PictureServices Services;
    PixelSize Size{1, 1};
    Served Active;
    Served Spare;
    bool ActiveIsStale = false;  ///< its pictures have the wrong size
    PicturePtr Current;
    Figures Counts;

    // Of the stretch that is shown now.
    std::optional<Stretch> Now;
    Nanoseconds Bias{0};
    Nanoseconds Begin{0};  ///< what its first tick showed; later ones show nothing before it
    TimePoint Since;
};

}  // namespace ZorvicRender
