#pragma once

#include "render/gl/compositor.h"
#include "render/pictures/picture.h"

#include <render.pb.h>

#include <memory>
#include <vector>

namespace ZorvicRender {

/// Where one output is drawn. For the thread that holds the graphics context.
class OutputSurface {
public:
    OutputSurface() = default;
    virtual ~OutputSurface() = default;
    OutputSurface(const OutputSurface&) = delete;
    OutputSurface& operator=(const OutputSurface&) = delete;

    /// Makes it what is drawn into.
    virtual void Bind() = 0;
    virtual PixelSize Size() const = 0;
    /// Shows what was drawn since Bind(); another Bind() before it may lose that.
    virtual void Present() = 0;
    /// True once after its content was lost.
    virtual bool TakeExposed() { return false; }
};

/// What monitors in consoles show of an output of this shape. One without a display is drawn no larger either: nobody
/// else sees it, and its drawing must not cost the others their pictures.
PixelSize PreviewSize(PixelSize shape);

/// The largest area of the output's shape within a surface, in the middle, in pixels.
Area FitShape(PixelSize shape, PixelSize surface);

/// The graphics context and the surfaces of all outputs, in the order of the set-up.
class Surfaces {
public:
    virtual ~Surfaces() = default;
    virtual OutputSurface& At(std::size_t output) = 0;
    /// Takes what the windowing system has to say.
    virtual void PumpEvents() {}
};

/// Throws Fault, naming the option, when one can not be opened.
std::unique_ptr<Surfaces> OpenSurfaces(const zorvic::render::Setup& setup);

}  // namespace ZorvicRender
