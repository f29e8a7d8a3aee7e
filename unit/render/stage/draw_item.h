#pragma once

#include "render/pictures/picture.h"
#include "render/scene.h"
#include "render/stage/canvas_layout.h"
#include "render/stage/picture_controls.h"

#include <algorithm>
#include <vector>

namespace ZorvicRender {

/// One picture as it lies on an output.
struct DrawItem {
    const void* Source = nullptr;  ///< whose picture it is: one texture per source
    RunId Run{};
    PicturePtr Shown;
    Area Place;  ///< the output is 1 wide and 1 high
    ColourMap Colours;
    float Light = 1;
    float Opacity = 1;
};

/// What an output shows, from the bottom up; nothing is black.
using DrawList = std::vector<DrawItem>;

/// True when both give the same picture.
inline bool SamePicture(const DrawList& a, const DrawList& b) {
    return std::ranges::equal(a, b, [](const DrawItem& one, const DrawItem& other) {
        return one.Shown == other.Shown && one.Place == other.Place && one.Colours == other.Colours &&
               one.Light == other.Light && one.Opacity == other.Opacity;
    });
}

}  // namespace ZorvicRender
