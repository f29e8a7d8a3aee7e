#pragma once

#include <zorvic/types.h>

#include <QString>
#include <QTime>

#include <cstdint>
#include <string>

// Remaining times are 32-bit counts of ms that units may fill with anything: sums wrap, as they do on the wire.

constexpr std::int32_t WrapAdd(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

constexpr std::int32_t WrapSubtract(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

/// Where the preset starts: its in point, or its whole running time when none is set.
inline std::int32_t StartPosition(const Zorvic::Preset& preset, const Zorvic::PresetState& state) {
    return preset.InPosition != 0 ? preset.InPosition : state.TRT;
}

/// From the start to the out point.
inline std::int32_t TrimmedLength(const Zorvic::Preset& preset, const Zorvic::PresetState& state) {
    return WrapSubtract(StartPosition(preset, state), preset.OutPosition);
}

/// Milliseconds as "hh:mm:ss", without the milliseconds. Wraps at 24 hours; a negative count shows as a time shortly
/// before midnight.
QString ClockText(int timeMS);

/// Colour name for a time left to the out point: "white" from 21000 ms, "yellow" from 11001 ms, "red" below.
QString RemainingTimeColor(int remainingMS);

/// Reads a typed time: "45" seconds, "2:30" minutes and seconds, "1:02:03" hours, minutes and seconds. Any character
/// but a digit ends a field; an empty field is 0. Midnight for an empty text and for three colons or more; a null time
/// for a field that a clock does not have, such as 90 seconds.
QTime ParseSeekTime(const std::string& text);
