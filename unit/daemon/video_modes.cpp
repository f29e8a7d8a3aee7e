#include "daemon/video_modes.h"

#include <zorvic/enums.h>

namespace ZorvicUnit {

Shape ShapeOf(std::int32_t resolution) {
    switch (resolution) {
        case Zorvic::ZORVIC_RES_720P:
            return {1280, 720};
        case Zorvic::ZORVIC_RES_2160P:
            return {3840, 2160};
        default:
            return {1920, 1080};
    }
}

Fraction RefreshOf(std::int32_t refresh) {
    switch (refresh) {
        case Zorvic::ZORVIC_REFRESH_23_98:
            return {24000, 1001};
        case Zorvic::ZORVIC_REFRESH_24:
            return {24, 1};
        case Zorvic::ZORVIC_REFRESH_25:
            return {25, 1};
        case Zorvic::ZORVIC_REFRESH_29_97:
            return {30000, 1001};
        case Zorvic::ZORVIC_REFRESH_30:
            return {30, 1};
        case Zorvic::ZORVIC_REFRESH_59_94:
            return {60000, 1001};
        case Zorvic::ZORVIC_REFRESH_60:
            return {60, 1};
        default:
            return {50, 1};
    }
}

}  // namespace ZorvicUnit
