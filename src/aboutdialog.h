#pragma once

#include "ui_aboutdialog.h"

#include <QWidget>

/// The about box. Has no owner: it deletes itself when it is dismissed or closed.
class AboutDialog : public QWidget, public Ui::AboutDialogUI {
    Q_OBJECT

public:
    AboutDialog();

private slots:
    void OnDismissClicked();
};
