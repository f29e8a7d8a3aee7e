#pragma once

#include <QTime>

#include <string>

/// Reads a typed time: "45" seconds, "2:30" minutes and seconds, "1:02:03" hours, minutes and seconds. Any character
/// but a digit ends a field; an empty field is 0. Midnight for an empty text and for three colons or more; a null time
/// for a field that a clock does not have, such as 90 seconds.
QTime ParseSeekTime(const std::string& text);
