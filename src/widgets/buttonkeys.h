#pragma once

class QAbstractButton;
class QKeySequence;

/// A key that presses a button, once however long it is held: a button's own shortcut would repeat, and clone or create
/// many times. Works while the button can be pressed; the button's text stays as it is.
void GiveKey(QAbstractButton& button, const QKeySequence& key);
