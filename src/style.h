#pragma once

#include <QFont>

class QApplication;

/// The platform's default family at this size in points, antialiased where the platform can.
QFont SizeDefaultFont(int pointSize);

/// Gives the application the dark look. Without the style resource it says so on standard output and leaves Qt's
/// default look.
void TryLoadStyle(QApplication& application);
