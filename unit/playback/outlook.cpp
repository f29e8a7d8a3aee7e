#include "playback/outlook.h"

#include "playback/entry.h"
#include "playback/playback.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

namespace ZorvicUnit {

namespace {

// Bounds what presets of a few milliseconds cost: each step adds at most one span.
constexpr int MaxSteps = 512;

OutlookSpan SpanFrom(const PlayEntry& entry, Clock::TimePoint from) {
    const PlayRun& run = *entry.Playing;
    return {.From = from,
            .Until = from,
            .Elapsed = run.Elapsed(from),
            .Moves = run.Moves(),
            .Waits = !run.Moves() && !run.Paused,
            .Window = entry.Window(),
            .First = run.Pass == 1,
            .Last = entry.LastPass()};
}

// Another pass begins elsewhere, and nothing but a command changes the fields of a preset.
bool GoesOn(const OutlookSpan& span, const OutlookSpan& next) {
    const auto elapsed = span.Elapsed + (span.Moves ? next.From - span.From : std::chrono::nanoseconds(0));
    return next.Elapsed == elapsed && next.Moves == span.Moves && next.Waits == span.Waits;
}

void EndSpans(std::vector<OutlookSpan>& spans, Clock::TimePoint at) {
    if (spans.empty()) return;
    spans.back().Until = at;
    if (spans.back().From == at) spans.pop_back();
}

/// Writes down how runs go on, from one moment at which something changes to the next.
class Record {
public:
    void Note(const PlayEntry& entry, Clock::TimePoint at) {
        const auto open = Open.find(entry.Preset->pk());
        if (open != Open.end() && !(entry.Playing && Layers[open->second].Run == entry.Runs)) {
            EndSpans(Layers[open->second].Spans, at);
            Open.erase(open);
        }
        if (!entry.Playing) return;
        auto& spans = LayerOf(entry).Spans;
        const OutlookSpan span = SpanFrom(entry, at);
        if (!spans.empty() && GoesOn(spans.back(), span)) return;
        EndSpans(spans, at);
        spans.push_back(span);
    }

    std::vector<OutlookLayer> Finish(Clock::TimePoint until) {
        for (const auto& [pk, place] : Open)
            EndSpans(Layers[place].Spans, until);
        std::vector<std::size_t> order(Layers.size());
        std::iota(order.begin(), order.end(), 0U);
        // Runs that share a place follow each other.
        std::ranges::stable_sort(order, {}, [this](std::size_t layer) { return Places[layer]; });
        std::vector<OutlookLayer> layers;
        for (const std::size_t layer : order)
            if (!Layers[layer].Spans.empty()) layers.push_back(std::move(Layers[layer]));
        return layers;
    }

private:
    OutlookLayer& LayerOf(const PlayEntry& entry) {
        const auto [open, added] = Open.try_emplace(entry.Preset->pk(), Layers.size());
        if (added) {
            Layers.push_back({.Preset = entry.Preset, .Run = entry.Runs, .Spans = {}});
            Places.push_back(entry.Playing->Place);
        }
        return Layers[open->second];
    }

    std::vector<OutlookLayer> Layers;
    std::vector<std::uint64_t> Places;         ///< of the layers in the stack
    std::map<std::int32_t, std::size_t> Open;  ///< the layer of the run that plays, by preset
};

}  // namespace

Playback::Playback(const Playback* origin)
    : Time(origin->Time), Catalog(origin->Catalog), Origin(origin), HeldAssets(origin->HeldAssets), Now(origin->Now) {
    for (const std::int32_t pk : origin->Active) {
        if (origin->Entries.at(pk).Playing) Active.insert(pk);
        Entries.emplace(pk, origin->Entries.at(pk));
    }
}

// The copy is carried on by the code that will carry on the origin, so that the two can not disagree.
Outlook Playback::Outlook(Clock::TimePoint until) const {
    Playback ahead(this);
    return ahead.Unroll(std::max(until, Now));
}

Outlook Playback::Unroll(Clock::TimePoint until) {
    Record record;
    for (const std::int32_t pk : Active)
        record.Note(Entries.at(pk), Now);
    int steps = 0;
    for (auto due = NextDue(until); due; due = NextDue(until)) {
        if (++steps > MaxSteps) {
            until = due->At;
            break;
        }
        const std::int32_t linked = CarryOut(*due, due->At);
        record.Note(Entries.at(due->PK), due->At);
        if (linked > 0) record.Note(Entries.at(linked), due->At);
    }
    return {.Until = until, .Layers = record.Finish(until), .Primed = {}};
}

std::optional<OutlookLayer> Playback::NextRun(std::int32_t pk, Clock::TimePoint until) const {
    const auto found = Entries.find(pk);
    if (found == Entries.end()) return std::nullopt;
    PlayEntry next = found->second;
    if (!next.LengthKnown || next.Retired || UsesHeldAsset(next)) return std::nullopt;
    const std::chrono::nanoseconds start = next.StartElapsed();
    next.Playing.emplace().Base = start;
    OutlookSpan span = SpanFrom(next, Now);
    span.Until = until;
    span.Waits = false;
    return OutlookLayer{.Preset = next.Preset, .Run = next.Runs + 1, .Spans = {span}};
}

}  // namespace ZorvicUnit
