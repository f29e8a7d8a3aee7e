#include "render/scene.h"

#include <algorithm>

namespace ZorvicRender {

namespace {

// Sound is mixed a little ahead of the clock or behind it; nobody looks back further.
constexpr Nanoseconds KeptPast = std::chrono::seconds(1);

Span ToSpan(const zorvic::render::Span& sent, bool planned) {
    return {.From = ToTime(sent.from()),
            .Until = ToTime(sent.until()),
            .Position = Nanoseconds(sent.position()),
            .Moves = sent.moves(),
            .Waits = sent.waits(),
            .Planned = planned,
            .WindowStart = Nanoseconds(sent.window_start()),
            .WindowEnd = Nanoseconds(sent.window_end()),
            .FirstPass = sent.first(),
            .LastPass = sent.last()};
}

// The spans of the layer as it was shown before, up to the moment from which it is known anew.
std::vector<Span> PastOf(const Layer* before, TimePoint from) {
    std::vector<Span> past;
    if (before == nullptr) return past;
    for (Span span : before->Spans) {
        if (span.From >= from || span.Until <= from - KeptPast) continue;
        span.Until = std::min(span.Until, from);
        past.push_back(span);
    }
    return past;
}

void Append(std::vector<Span>& spans, const Span& next) {
    const bool same = !spans.empty() && spans.back().Until == next.From && next.Continues(spans.back()) &&
                      next.Waits == spans.back().Waits && next.WindowStart == spans.back().WindowStart &&
                      next.WindowEnd == spans.back().WindowEnd && next.FirstPass == spans.back().FirstPass &&
                      next.LastPass == spans.back().LastPass;
    if (same) {
        spans.back().Until = next.Until;
        return;
    }
    spans.push_back(next);
}

class SceneMaker {
public:
    SceneMaker(const Scene& before, const zorvic::render::Outlook& outlook, const KeptFile::Report& opening)
        : Before(before), Until(ToTime(outlook.until())), Opening(opening) {}

    template <typename Messages>
    std::vector<std::shared_ptr<const Layer>> ToLayers(const Messages& messages, bool play) const {
        std::vector<std::shared_ptr<const Layer>> layers;
        for (const auto& sent : messages) {
            if (!sent.spans().empty()) layers.push_back(ToLayer(sent, play));
        }
        return layers;
    }

private:
    std::shared_ptr<const Layer> ToLayer(const zorvic::render::Layer& sent, bool plays) const {
        const Layer* before = Before.Find({sent.pk(), sent.run()});
        auto layer = std::make_shared<Layer>();
        layer->Id = {sent.pk(), sent.run()};
        layer->Preset = std::make_shared<const zorvic::v1::Preset>(sent.preset());
        for (const auto& medium : sent.media())
            layer->Media.push_back({medium.path(), FileOf(layer->Id, medium, plays)});
        layer->Spans = PastOf(before, ToTime(sent.spans(0).from()));
        for (int i = 0; i < sent.spans_size(); ++i)
            Append(layer->Spans, ToSpan(sent.spans(i), i > 0));
        layer->EndsByItself = layer->Spans.back().Until < Until;
        return layer;
    }

    // What plays goes on with the file that it began with; what waits for its take begins with the latest.
    std::shared_ptr<KeptFile> FileOf(const RunId& id, const zorvic::render::Medium& sent, bool plays) const {
        if (sent.file().empty()) return nullptr;
        auto kept = Before.FindFile(id, sent.path());
        if (kept && (plays || kept->IsCurrent())) return kept;
        return std::make_shared<KeptFile>(sent.path(), sent.file(), Opening);
    }

    const Scene& Before;
    const TimePoint Until;
    const KeptFile::Report& Opening;
};

}  // namespace

const Span* Layer::At(TimePoint time) const {
    const auto found = std::find_if(Spans.begin(), Spans.end(), [&](const Span& span) { return time < span.Until; });
    if (found == Spans.end()) return EndsByItself ? nullptr : &Spans.back();
    return found->From > time ? nullptr : &*found;
}

const Span* Layer::JumpAfter(TimePoint time) const {
    for (std::size_t i = 1; i < Spans.size(); ++i) {
        if (Spans[i].From > time && !Spans[i].Continues(Spans[i - 1])) return &Spans[i];
    }
    return nullptr;
}

const Layer* Scene::Find(const RunId& id) const {
    const auto found = std::ranges::find(Layers, id, [](const auto& layer) { return layer->Id; });
    return found == Layers.end() ? nullptr : found->get();
}

std::shared_ptr<KeptFile> Scene::FindFile(const RunId& id, const std::string& path) const {
    for (const auto* layers : {&Layers, &Primed}) {
        const auto layer = std::ranges::find(*layers, id, [](const auto& candidate) { return candidate->Id; });
        if (layer == layers->end()) continue;
        const auto medium = std::ranges::find((*layer)->Media, path, &Medium::Path);
        if (medium != (*layer)->Media.end()) return medium->File;
    }
    return nullptr;
}

Scene NextScene(const Scene& before, const zorvic::render::Outlook& outlook, const KeptFile::Report& opening) {
    const SceneMaker maker(before, outlook, opening);
    return {.Layers = maker.ToLayers(outlook.layers(), true), .Primed = maker.ToLayers(outlook.primed(), false)};
}

}  // namespace ZorvicRender
