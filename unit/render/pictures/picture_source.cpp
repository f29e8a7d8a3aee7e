#include "render/pictures/picture_source.h"

#include <algorithm>
#include <utility>

namespace ZorvicRender {

namespace {

// From then on a seek finds a second reader open; sooner it would delay the first one's pictures.
constexpr Nanoseconds SpareOpensAfter = std::chrono::milliseconds(500);
constexpr int FirstPictureTicks = 3;

// A position up to the end of the window shows a picture from within it.
Nanoseconds WithinWindow(const Span& span, TimePoint at, Nanoseconds aim) {
    return span.PositionAt(at) > span.WindowEnd ? aim : std::min(aim, span.WindowEnd - Nanoseconds(1));
}

}  // namespace

PictureSource::PictureSource(std::shared_ptr<KeptFile> file, PictureServices services)
    : File(std::move(file)), Services(services) {}

PictureSource::~PictureSource() {
    Services.Leftovers.Take(std::move(Active.Reader));
    Services.Leftovers.Take(std::move(Spare.Reader));
}

PictureReader& PictureSource::Get(Served& served) {
    if (!served.Reader) {
        served.Reader = std::make_unique<PictureReader>(File, Services.Budget);
        served.Reader->SetSize(Size);
    }
    return *served.Reader;
}

void PictureSource::StartFor(Served& served, const Span& span) {
    const Nanoseconds position = WithinWindow(span, span.From, span.Position + PositionTolerance);
    // A run that is taken begins where it was got ready, and a seek that is resumed where it stands.
    const bool isThere = served.For && Get(served).IsAt(position);
    if (!isThere) Get(served).Start(position);
    served.For = StretchOf(span);
}

void PictureSource::Prime(const Layer& layer) {
    const Span& span = layer.Spans.front();
    if (Active.For != StretchOf(span)) StartFor(Active, span);
}

void PictureSource::SetSize(PixelSize size) {
    if (size == Size) return;
    Size = size;
    for (Served* served : {&Active, &Spare}) {
        if (served->Reader) served->Reader->SetSize(size);
        served->For.reset();
    }
    Now.reset();
    ActiveIsStale = Current != nullptr;
}

bool PictureSource::IsReady(Nanoseconds position) {
    return HasFailed() || (Active.Reader && Active.For && Active.Reader->Holds(position + PositionTolerance));
}

bool PictureSource::HasFailed() const {
    return Active.Reader && Active.Reader->HasFailed();
}

std::string PictureSource::TakeProblem() {
    return Active.Reader ? Active.Reader->TakeProblem() : std::string();
}

void PictureSource::Follow(const Layer& layer, TimePoint lightUp, Nanoseconds tick) {
    Counts.JumpTime.reset();
    const Span* span = layer.At(lightUp);
    if (span == nullptr || HasFailed()) return;
    if (Now == StretchOf(*span)) {
        Show(Aim(*span, lightUp), tick);
    } else if (!SwitchTo(*span, lightUp, tick)) {
        if (Current) ++Counts.Repeated;
        return;
    }
    PrepareJump(layer, lightUp);
}

Nanoseconds PictureSource::Aim(const Span& span, TimePoint lightUp) const {
    Nanoseconds aim = span.PositionAt(lightUp) + PositionTolerance;
    if (span.Moves) aim = std::max(aim + Bias, Begin);
    return WithinWindow(span, lightUp, aim);
}

void PictureSource::Show(Nanoseconds aim, Nanoseconds tick) {
    const auto choice = Get(Active).Choose(aim);
    if (!choice.Exact) ++Counts.Repeated;
    if (!choice.Shown) return;
    if (choice.Shown->Until - choice.Shown->From >= tick) Counts.Dropped += static_cast<std::uint64_t>(choice.Passed);
    Current = choice.Shown;
}

void PictureSource::Prepare(const Layer& layer, TimePoint lightUp, Nanoseconds tick) {
    const Span* span = layer.At(lightUp);
    if (span != nullptr && !HasFailed() && Now != StretchOf(*span)) Seek(*span, FirstAim(*span, lightUp, tick));
}

// The first picture of a run and of a pass is shown, even when the first tick comes too late for it.
Nanoseconds PictureSource::FirstAim(const Span& span, TimePoint lightUp, Nanoseconds tick) const {
    const bool begins = !Current || span.Planned;
    const bool inTime = lightUp - span.From < FirstPictureTicks * tick;
    const Nanoseconds position = begins && inTime ? span.Position : span.PositionAt(lightUp);
    return WithinWindow(span, lightUp, position + PositionTolerance);
}

// The reader that has the picture, or is sent for it.
PictureSource::Served& PictureSource::Seek(const Span& span, Nanoseconds aim) {
    const bool activeHasIt = Active.For && !ActiveIsStale && Get(Active).Contains(aim);
    Served& candidate = activeHasIt || !Current ? Active : Spare;
    if (candidate.For != StretchOf(span) && !activeHasIt) StartFor(candidate, span);
    return candidate;
}

// Begins to show a stretch, if its picture is ready; the old one stands until then.
bool PictureSource::SwitchTo(const Span& span, TimePoint lightUp, Nanoseconds tick) {
    const Stretch stretch = StretchOf(span);
    const Nanoseconds aim = FirstAim(span, lightUp, tick);
    Served& candidate = Seek(span, aim);
    if (!Get(candidate).Holds(aim)) return false;
    if (&candidate == &Spare) {
        std::swap(Active, Spare);
        Spare.For.reset();
        Get(Spare).Rest();
    }
    ActiveIsStale = false;
    Active.For = stretch;
    Now = stretch;
    Since = lightUp;
    Counts.JumpTime = span.Planned ? std::nullopt : std::optional(lightUp - span.From);
    Show(aim, tick);
    CentreTicks(span, aim, lightUp, tick);
    return true;
}

// Ticks and pictures of one rate may coincide to the microsecond, and would then jitter: the edges between pictures are
// moved to the middle between two ticks.
void PictureSource::CentreTicks(const Span& span, Nanoseconds aim, TimePoint lightUp, Nanoseconds tick) {
    const Nanoseconds into = span.PositionAt(lightUp) + PositionTolerance - Current->From;
    Bias = tick / 2 - (into % tick + tick) % tick;
    Begin = aim;
}

void PictureSource::PrepareJump(const Layer& layer, TimePoint lightUp) {
    const Span* jump = layer.JumpAfter(lightUp);
    if (jump != nullptr && jump->Moves) {
        // A run that stands until it may move goes on with the reader that it stands on.
        const bool isThere = Get(Active).Contains(WithinWindow(*jump, jump->From, jump->Position + PositionTolerance));
        if (Spare.For != StretchOf(*jump) && (Now->Moves || !isThere)) StartFor(Spare, *jump);
    } else if (!Spare.Reader && Now->Moves && lightUp - Since > SpareOpensAfter) {
        Get(Spare);
    }
}

}  // namespace ZorvicRender
