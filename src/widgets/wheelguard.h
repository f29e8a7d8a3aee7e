#pragma once

class QWidget;

/// Makes the sliders, boxes and choices in `parent` change by the mouse wheel only while they have the keyboard: a
/// wheel that passes over them on its way through a list must not set anything.
void GuardWheel(QWidget& parent);
