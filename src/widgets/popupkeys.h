#pragma once

class QComboBox;
class QWidget;

/// Keeps Return, Enter and Escape in the box's open list. Qt closes the list before it looks for shortcuts, so the key
/// that picks an entry, or gives up, would go on to the window's shortcut and save, close, take or end something.
void KeepKeysInPopup(QComboBox& box);

/// Keeps them in a widget that has the keyboard, such as a menu bar.
void KeepKeys(QWidget& widget);
