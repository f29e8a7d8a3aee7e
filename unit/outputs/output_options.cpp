#include "outputs/output_options.h"

#include <charconv>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace ZorvicUnit {

namespace {

using zorvic::render::Output;

constexpr unsigned OutputCount = 4;
constexpr unsigned LeastSide = 16;
constexpr unsigned MostSide = 8192;
constexpr unsigned MostDisplays = 16;

[[noreturn]] void Refuse(const std::string& text) {
    throw std::invalid_argument(
        "expected N=window[:WxH], N=fullscreen[:DISPLAY], N=offscreen or N=off with N from 1 to 4, got " + text);
}

std::optional<unsigned> ToNumber(std::string_view text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

bool ReadWindow(std::string_view size, Output& output) {
    output.set_sink(Output::SINK_WINDOW);
    if (size.empty()) return true;
    const auto cross = size.find('x');
    if (cross == size.npos) return false;
    const auto width = ToNumber(size.substr(0, cross));
    const auto height = ToNumber(size.substr(cross + 1));
    output.set_window_width(width.value_or(0));
    output.set_window_height(height.value_or(0));
    return width && height && *width >= LeastSide && *width <= MostSide && *height >= LeastSide && *height <= MostSide;
}

bool ReadFullscreen(std::string_view display, Output& output) {
    output.set_sink(Output::SINK_FULLSCREEN);
    if (display.empty()) return true;
    const auto number = ToNumber(display);
    output.set_display(number.value_or(0));
    return number && *number < MostDisplays;
}

Output ParseOutput(const std::string& text) {
    const std::string_view view(text);
    const auto equals = view.find('=');
    const auto number = equals == view.npos ? std::nullopt : ToNumber(view.substr(0, equals));
    if (!number || *number < 1 || *number > OutputCount) Refuse(text);
    const std::string_view sink = view.substr(equals + 1);
    const auto colon = sink.find(':');
    const std::string_view kind = sink.substr(0, colon);
    const std::string_view detail = colon == sink.npos ? std::string_view() : sink.substr(colon + 1);
    Output output;
    output.set_number(*number);
    const bool bare = colon == sink.npos;
    if (!bare && detail.empty()) Refuse(text);
    if (kind == "window" && ReadWindow(detail, output)) return output;
    if (kind == "fullscreen" && ReadFullscreen(detail, output)) return output;
    if (kind == "offscreen" && bare) {
        output.set_sink(Output::SINK_OFFSCREEN);
        return output;
    }
    if (kind == "off" && bare) {
        output.set_sink(Output::SINK_UNSPECIFIED);
        return output;
    }
    Refuse(text);
}

}  // namespace

std::vector<Output> ParseOutputs(const std::vector<std::string>& texts) {
    std::map<unsigned, Output> byNumber;
    for (const std::string& text : texts) {
        const Output output = ParseOutput(text);
        byNumber[output.number()] = output;
    }
    std::vector<Output> outputs;
    for (const auto& [number, output] : byNumber) {
        if (output.sink() != Output::SINK_UNSPECIFIED) outputs.push_back(output);
    }
    return outputs;
}

void CheckAudio(const std::string& text) {
    constexpr std::string_view Device = "alsa:";
    constexpr std::string_view File = "file:";
    if (text == "off" || text == "default") return;
    if (text.starts_with(Device) && text.size() > Device.size()) return;
    if (text.starts_with(File) && text.ends_with(".wav") && text.size() > File.size() + 4) return;
    throw std::invalid_argument("expected off, default, alsa:DEVICE or file:PATH.wav, got " + text);
}

}  // namespace ZorvicUnit
