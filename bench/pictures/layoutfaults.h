#pragma once

#include <QStringList>

/// What is cut off, overlaps or sticks out in the windows that are shown, one line each; empty when all have room.
QStringList LayoutFaults();
