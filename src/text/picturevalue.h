#pragma once

// Picture adjustments: a value from -1 to 1 on the unit is a slider position from -100 to 100.

/// Truncates towards zero. Values beyond the range give its ends; one that is not a number gives 0.
int PicturePosition(float value);
float PictureValue(int position);
