#include "outputs/outlook_message.h"

#include <set>

namespace ZorvicUnit {

namespace {

std::int64_t ToNanoseconds(Clock::TimePoint time) {
    return time.time_since_epoch().count();
}

std::int64_t ToNanoseconds(std::chrono::nanoseconds time) {
    return time.count();
}

void Fill(const OutlookSpan& span, zorvic::render::Span& message) {
    message.set_from(ToNanoseconds(span.From));
    message.set_until(ToNanoseconds(span.Until));
    message.set_position(ToNanoseconds(span.Elapsed));
    message.set_moves(span.Moves);
    message.set_waits(span.Waits);
    message.set_window_start(ToNanoseconds(span.Window.Start));
    message.set_window_end(ToNanoseconds(span.Window.End));
    message.set_first(span.First);
    message.set_last(span.Last);
}

// Marks and texts may be most of a preset, and nobody sees them on an output.
void Fill(const zorvic::v1::Preset& preset, zorvic::v1::Preset& message) {
    *message.mutable_canvases() = preset.canvases();
    *message.mutable_volume() = preset.volume();
    message.set_fade_in_ms(preset.fade_in_ms());
    message.set_fade_out_ms(preset.fade_out_ms());
    message.set_dissolve_in_ms(preset.dissolve_in_ms());
    message.set_dissolve_out_ms(preset.dissolve_out_ms());
}

void Fill(const OutlookLayer& layer, const std::function<std::string(const std::string&)>& fileOf,
          zorvic::render::Layer& message) {
    message.set_pk(layer.Preset->pk());
    message.set_run(layer.Run);
    Fill(*layer.Preset, *message.mutable_preset());
    std::set<std::string> paths;
    for (const auto& canvas : layer.Preset->canvases()) {
        for (const auto& asset : canvas.assets()) {
            if (!paths.insert(asset.full_path()).second) continue;
            auto& medium = *message.add_media();
            medium.set_path(asset.full_path());
            medium.set_file(fileOf(asset.full_path()));
        }
    }
    for (const OutlookSpan& span : layer.Spans)
        Fill(span, *message.add_spans());
}

}  // namespace

zorvic::render::Outlook ToMessage(const Outlook& outlook,
                                  const std::function<std::string(const std::string&)>& fileOf) {
    zorvic::render::Outlook message;
    message.set_until(ToNanoseconds(outlook.Until));
    for (const OutlookLayer& layer : outlook.Layers)
        Fill(layer, fileOf, *message.add_layers());
    for (const OutlookLayer& layer : outlook.Primed)
        Fill(layer, fileOf, *message.add_primed());
    return message;
}

}  // namespace ZorvicUnit
