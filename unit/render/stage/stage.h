#pragma once

#include "render/pictures/picture_source.h"
#include "render/reaper.h"
#include "render/scene.h"
#include "render/stage/draw_item.h"
#include "render/stage/run_ledger.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZorvicRender {

/// An output as the stage sees it.
struct StageOutput {
    std::uint32_t Number = 1;  ///< from 1, as canvases count them
    PixelSize Shape;           ///< of the video mode
    PixelSize Target;          ///< what is really drawn
};

struct ReadyRun {
    const Layer* Of = nullptr;
    Nanoseconds Position{0};
};

/// Which pictures lie where on each output at each tick: holds a source for each asset of each run that plays or may be
/// taken next. All outputs take their pictures from the same choice, so that they show the same one at every tick. For
/// one thread.
class Stage {
public:
    /// Something is not shown, and why; once for each source.
    using TroubleReport = std::function<void(const std::string& text)>;

    Stage(std::vector<StageOutput> outputs, TroubleReport report);
    ~Stage();

    /// A window has another size now.
    void SetTarget(std::size_t output, PixelSize target);
    /// Chooses the pictures of the tick that lights up at this time.
    void Follow(const Scene& scene, TimePoint lightUp, Nanoseconds tick);
    /// Sends readers for what the next Follow() will need, so that it need not wait for a tick.
    void Prepare(const Scene& scene, TimePoint lightUp, Nanoseconds tick);
    /// What an output (by its place in the list) shows since the last Follow().
    const DrawList& Shown(std::size_t output) const { return Lists[output]; }

    /// Runs that stand at this time, whatever they will do, and whose picture is there.
    std::vector<ReadyRun> ReadyRuns(const Scene& scene, TimePoint at);
    /// True when something moves, or something that is wanted is not there yet.
    bool IsBusy() const { return Busy; }

    /// The output has really shown its list now.
    void NoteShown(std::size_t output, TimePoint at);
    /// What is new of what outputs have shown of runs.
    std::vector<RunFigures> TakeRunFigures(TimePoint now) { return Ledger.Take(now); }

    struct Figures {
        std::uint64_t Dropped = 0;
        std::uint64_t Repeated = 0;
        Nanoseconds FirstPicture{0};  ///< latest
        Nanoseconds Seek{0};          ///< latest
    };
    const Figures& Counted() const { return Counts; }

private:
    struct Run;
    Run& Get(const std::shared_ptr<const Layer>& layer);
    void LayOut(Run& run, std::size_t output);
    void OpenSources(Run& run);
    void FollowSources(Run& run, const Layer& layer, TimePoint lightUp, Nanoseconds tick);
    void PrimeInTurn(const Scene& scene, TimePoint lightUp);
    bool ShowsAll(const Layer& layer) const;
    bool Prime(const std::shared_ptr<const Layer>& layer);
    void List(const Run& run, const Layer& layer, TimePoint lightUp);
    void DropOthers(const Scene& scene);

    std::vector<StageOutput> Outputs;
    std::vector<DrawList> Lists;
    std::uint64_t TargetsVersion = 1;
    const TroubleReport Report;
    PictureBudget Budget;
    Reaper Leftovers;
    std::map<RunId, std::unique_ptr<Run>> Runs;
    bool Busy = false;
    Figures Counts;
    RunLedger Ledger;
};

}  // namespace ZorvicRender
