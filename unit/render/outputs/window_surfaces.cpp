#include "render/outputs/window_surfaces.h"

#include "fault.h"

#include <GLES2/gl2.h>
#include <SDL2/SDL.h>
#include <spdlog/fmt/fmt.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

namespace ZorvicRender {

using ZorvicUnit::Fault;
using ZorvicUnit::FaultKind;

namespace {

// As large as the picture where a desk has room for it.
constexpr unsigned MostWindowWidth = 960;

[[noreturn]] void Refuse(std::uint32_t number, const std::string& what) {
    throw Fault(FaultKind::Internal, fmt::format("--output {}: {}", number, what));
}

SDL_Rect PlaceOf(const zorvic::render::Output& output) {
    if (output.sink() == zorvic::render::Output::SINK_FULLSCREEN) {
        const int displays = SDL_GetNumVideoDisplays();
        if (std::cmp_greater_equal(output.display(), displays)) {
            throw Fault(FaultKind::Misused,
                        fmt::format("--output {}=fullscreen:{}: there are {} displays, from 0 to {}", output.number(),
                                    output.display(), displays, displays - 1));
        }
        SDL_Rect bounds{};
        SDL_GetDisplayBounds(static_cast<int>(output.display()), &bounds);
        return bounds;
    }
    SDL_Rect place{SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, static_cast<int>(output.window_width()),
                   static_cast<int>(output.window_height())};
    if (place.w > 0 && place.h > 0) return place;
    const unsigned width = std::min(output.width(), MostWindowWidth);
    place.w = static_cast<int>(width);
    place.h = static_cast<int>(width * output.height() / output.width());
    return place;
}

}  // namespace

class WindowSurfaces::Window final : public OutputSurface {
public:
    Window(const zorvic::render::Output& output, const std::string& title, const SDL_GLContext& context)
        : Fullscreen(output.sink() == zorvic::render::Output::SINK_FULLSCREEN), Context(context) {
        const SDL_Rect place = PlaceOf(output);
        const Uint32 kind = Fullscreen ? SDL_WINDOW_FULLSCREEN_DESKTOP : SDL_WINDOW_RESIZABLE;
        Handle = SDL_CreateWindow(title.c_str(), place.x, place.y, place.w, place.h,
                                  SDL_WINDOW_OPENGL | SDL_WINDOW_ALLOW_HIGHDPI | kind);
        if (Handle == nullptr) Refuse(output.number(), SDL_GetError());
    }
    ~Window() override { SDL_DestroyWindow(Handle); }

    void Bind() override {
        SDL_GL_MakeCurrent(Handle, Context);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    }
    PixelSize Size() const override {
        PixelSize size;
        SDL_GL_GetDrawableSize(Handle, &size.Width, &size.Height);
        return {std::max(size.Width, 1), std::max(size.Height, 1)};
    }
    void Present() override { SDL_GL_SwapWindow(Handle); }
    bool TakeExposed() override { return std::exchange(Exposed, false); }

    void Handled(const SDL_WindowEvent& event) {
        if (event.windowID != SDL_GetWindowID(Handle)) return;
        if (event.event == SDL_WINDOWEVENT_EXPOSED || event.event == SDL_WINDOWEVENT_SIZE_CHANGED) Exposed = true;
        // A pointer has no place in the show, and must be seen beside it.
        if (event.event == SDL_WINDOWEVENT_ENTER) SDL_ShowCursor(Fullscreen ? SDL_DISABLE : SDL_ENABLE);
        if (event.event == SDL_WINDOWEVENT_LEAVE) SDL_ShowCursor(SDL_ENABLE);
    }

    SDL_Window* Handle = nullptr;

private:
    const bool Fullscreen;
    const SDL_GLContext& Context;
    bool Exposed = true;
};

WindowSurfaces::WindowSurfaces(const zorvic::render::Setup& setup) {
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "0");
    SDL_SetHint(SDL_HINT_VIDEO_MINIMIZE_ON_FOCUS_LOSS, "0");
    SDL_SetHint(SDL_HINT_APP_NAME, "zorvic-render");
    // Without that directory there is no Wayland, and each attempt would say so in the log.
    if (std::getenv("XDG_RUNTIME_DIR") == nullptr) SDL_SetHint(SDL_HINT_VIDEODRIVER, "x11,kmsdrm");
    if (SDL_Init(SDL_INIT_VIDEO) != 0)
        throw Fault(FaultKind::Internal, fmt::format("--output: no display can be opened: {}", SDL_GetError()));
    // Drivers that show nothing step in when there is no display.
    const std::string driver = SDL_GetCurrentVideoDriver();
    if (driver == "offscreen" || driver == "dummy")
        throw Fault(FaultKind::Internal, "--output: no display can be opened: neither DISPLAY nor another is there");
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_ES);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 2);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 0);
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 0);
    // The context comes with the first window.
    Outputs.resize(static_cast<std::size_t>(setup.outputs_size()));
    for (int i = 0; i < setup.outputs_size(); ++i) {
        const auto& output = setup.outputs(i);
        if (output.sink() == zorvic::render::Output::SINK_OFFSCREEN) continue;
        auto window =
            std::make_unique<Window>(output, fmt::format("{} - Output {}", setup.nickname(), output.number()), Context);
        if (Context == nullptr) Context = SDL_GL_CreateContext(window->Handle);
        if (Context == nullptr) Refuse(output.number(), fmt::format("no OpenGL ES 2: {}", SDL_GetError()));
        window->Bind();
        // Each would wait for its own display in turn; the loop keeps the time for all.
        SDL_GL_SetSwapInterval(0);
        Windows.push_back(window.get());
        Outputs[static_cast<std::size_t>(i)] = std::move(window);
    }
    for (int i = 0; i < setup.outputs_size(); ++i) {
        auto& output = Outputs[static_cast<std::size_t>(i)];
        if (!output) output = MakeOffscreenSurface(setup.outputs(i));
    }
}

WindowSurfaces::~WindowSurfaces() {
    Outputs.clear();
    if (Context != nullptr) SDL_GL_DeleteContext(Context);
    SDL_Quit();
}

// A window that somebody closes stays: the show ends at the console.
void WindowSurfaces::PumpEvents() {
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        if (event.type != SDL_WINDOWEVENT) continue;
        for (Window* window : Windows)
            window->Handled(event.window);
    }
}

}  // namespace ZorvicRender
