#pragma once

#include "ui_aboutdialog.h"

#include <QWidget>

/// The about box. Has no owner: it deletes itself when it is dismissed or closed.
class AboutDialog : public QWidget, public Ui::AboutDialogUI {
    Q_OBJECT

public:
    AboutDialog();

    /// What else runs beside the console: the library and each connected unit, a line for each.
    void ShowVersions(const QStringList& lines);

private slots:
    void OnDismissClicked();
};
