#pragma once

#include "ui_assetsloadingdialog.h"

#include <QWidget>

#include <cstdint>

/// Progress of the first scan of all assets.
class AssetsLoadingDialog : public QWidget, public Ui::AssetsLoadingDialogUI {
    Q_OBJECT

public:
    AssetsLoadingDialog();

    void SetTotal(std::uint32_t total);
    void Increment();
    void UpdateProgress();

private:
    std::uint32_t TotalAssets = 0;
    std::uint32_t Completed = 0;
};
