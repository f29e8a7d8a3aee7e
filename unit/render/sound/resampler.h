#pragma once

#include "media/media_file.h"

extern "C" {
#include <libswresample/swresample.h>
}

#include <memory>

namespace ZorvicRender {

using Resampler = std::unique_ptr<SwrContext, ZorvicUnit::AvFree<swr_free>>;

}  // namespace ZorvicRender
