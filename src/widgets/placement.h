#pragma once

class QWidget;

/// Opens the window centred over the main window (the main window itself on the screen), and from then on where the
/// operator left it.
void PlaceOverMainWindow(QWidget& window);
