#include "assetsloadingdialog.h"

#include "widgets/placement.h"

AssetsLoadingDialog::AssetsLoadingDialog() {
    setupUi(this);
    PlaceOverMainWindow(*this);
    PBar->setFormat(tr("Asset %v of %m (%p%)"));
    UpdateProgress();
}

void AssetsLoadingDialog::SetTotal(std::uint32_t total) {
    TotalAssets = total;
    UpdateProgress();
}

void AssetsLoadingDialog::Increment() {
    ++Completed;
    UpdateProgress();
}

void AssetsLoadingDialog::UpdateProgress() {
    PBar->setMaximum(static_cast<int>(TotalAssets));
    PBar->setMinimum(0);
    PBar->setValue(static_cast<int>(Completed));
}
