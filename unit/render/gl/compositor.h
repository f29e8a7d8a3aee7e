#pragma once

#include "render/stage/draw_item.h"

#include <map>
#include <vector>

namespace ZorvicRender {

/// Draws lists of pictures into the framebuffer that is bound. Needs a current OpenGL ES 2 context, the same for its
/// whole life.
class Compositor {
public:
    /// Throws Fault when the shaders do not compile.
    Compositor();
    ~Compositor();
    Compositor(const Compositor&) = delete;
    Compositor& operator=(const Compositor&) = delete;

    /// Fills the viewport: black, then the pictures. `place` is where the output lies in the framebuffer, from its top
    /// left; what surrounds it is black.
    void Draw(const DrawList& list, PixelSize framebuffer, const Area& place);
    /// Lets go of the textures that no list has drawn since the last call.
    void DropUnused();

private:
    struct Texture {
        unsigned Name = 0;
        PicturePtr Held;
        bool Used = true;
    };
    void BindTexture(const DrawItem& item);

    unsigned Program = 0;
    int Colours = 0;
    int Offset = 0;
    int Light = 0;
    int Opacity = 0;
    std::map<const void*, Texture> Textures;
};

/// A picture in memory to draw into.
class Canvas {
public:
    explicit Canvas(PixelSize size);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    void Bind() const;
    PixelSize Size() const { return Extent; }
    /// RGBA, rows from the top; binds it.
    std::vector<std::uint8_t> Read() const;

private:
    const PixelSize Extent;
    unsigned Framebuffer = 0;
    unsigned Texture = 0;
};

}  // namespace ZorvicRender
