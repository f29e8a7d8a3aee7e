#include "assetsloadingdialog.h"

#include "widgets/placement.h"

#include <QCloseEvent>
#include <QShortcut>

AssetsLoadingDialog::AssetsLoadingDialog() {
    setupUi(this);
    PlaceOverMainWindow(*this);
    PBar->setFormat(tr("Asset %v of %m (%p%)"));
    connect(SkipButton, &QPushButton::clicked, this, &QWidget::close);
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);
    UpdateProgress();
}

void AssetsLoadingDialog::closeEvent(QCloseEvent* event) {
    Left = true;
    QWidget::closeEvent(event);
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
