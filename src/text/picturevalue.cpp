#include "text/picturevalue.h"

#include <algorithm>
#include <cmath>

int PicturePosition(float value) {
    return std::isnan(value) ? 0 : static_cast<int>(std::clamp(100.0 * static_cast<double>(value), -100.0, 100.0));
}

float PictureValue(int position) {
    return static_cast<float>(position / 100.0);
}
