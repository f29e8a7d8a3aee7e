#pragma once

#include <QString>

/// Milliseconds as "hh:mm:ss", without the milliseconds. Wraps at 24 hours; a negative count shows as a time shortly
/// before midnight.
QString ClockText(int timeMS);

/// Colour name for a time left to the out point: "white" from 21000 ms, "yellow" from 11001 ms, "red" below.
QString RemainingTimeColor(int remainingMS);
