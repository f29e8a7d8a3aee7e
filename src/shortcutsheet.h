#pragma once

#include "ui_shortcutsheet.h"

#include <QWidget>

/// All keys that do something, by where they do it. Has no owner: it deletes itself when it is closed.
class ShortcutSheet : public QWidget, public Ui::ShortcutSheetUI {
    Q_OBJECT

public:
    ShortcutSheet();

private:
    void AddGroups();
    void FitTexts();
};
