#pragma once

#include "ui_assetsloadingdialog.h"

#include <QWidget>

#include <cstdint>

/// Progress of the first scan of all assets, which the operator may leave: by the button, Escape, or closing it.
class AssetsLoadingDialog : public QWidget, public Ui::AssetsLoadingDialogUI {
    Q_OBJECT

public:
    AssetsLoadingDialog();

    void SetTotal(std::uint32_t total);
    void Increment();
    void UpdateProgress();
    bool IsLeft() const { return Left; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    std::uint32_t TotalAssets = 0;
    std::uint32_t Completed = 0;
    bool Left = false;
};
