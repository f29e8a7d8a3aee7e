#include "zorvicview.h"

#include "assetbrowser.h"
#include "assetsloadingdialog.h"
#include "view/assetrows.h"

#include <QCoreApplication>
#include <QIcon>

#include <algorithm>
#include <iostream>

void ZorvicView::WireAssets() {
    connect(ToggleAssetsViewButton, &QPushButton::clicked, this, &ZorvicView::OnAssetToggleClicked);
    connect(AssetImportButton, &QPushButton::clicked, this, &ZorvicView::OnAssetImportClicked);
    connect(AssetDeleteButton, &QPushButton::clicked, this, &ZorvicView::OnAssetDeleteClicked);
}

void ZorvicView::AcceptAssets(const std::vector<Zorvic::Asset>& assets) {
    // This view may be gone afterwards.
    AssetList->Show(assets, [&] { BrowserDialog->UpdateIngestProgress(assets); });
}

void ZorvicView::UpdateAssetsLabel(const std::vector<Zorvic::Asset>& assets) {
    AssetList->ShowCount(assets.size());
}

void ZorvicView::InitialAssetScan() {
    std::vector<Zorvic::Asset> assets;
    {
        const auto handle = LookupSession();
        if (!handle || handle->GetSession()->GetAssets(assets) != Zorvic::ZORVIC_STATUS_OK) return;
    }
    AssetsLoadingDialog dialog;
    dialog.SetTotal(static_cast<std::uint32_t>(assets.size()));
    dialog.show();
    QCoreApplication::processEvents();
    for (const auto& asset : assets) {
        dialog.Increment();
        QCoreApplication::processEvents();
        if (dialog.IsLeft()) break;  // what it would have read is read when it is shown
        const std::unique_ptr<Zorvic::AssetMetadata> metadata(MDCache.LookupAsset(asset));
    }
}

void ZorvicView::OnAssetDeleteClicked() {
    auto paths = AssetList->SelectedPaths();
    for (const auto& path : paths)
        std::cout << "Marking asset \"" << path << "\" for deletion" << std::endl;
    const auto handle = paths.empty() ? nullptr : LookupSession();
    if (!handle) return;
    std::reverse(paths.begin(), paths.end());
    for (const auto& path : paths) {
        const auto status = handle->GetSession()->DeleteAsset(path);
        Report(AssetDeleteButton->accessibleName(), handle->GetSession(), status);
        if (status != Zorvic::ZORVIC_STATUS_OK) {
            std::cerr << "Warning: Failed to delete asset \"" << path << "\"!" << std::endl;
        }
    }
}

void ZorvicView::OnAssetImportClicked() {
    BrowserDialog->show();
    BrowserDialog->raise();
    BrowserDialog->activateWindow();
}

void ZorvicView::OnAssetToggleClicked() {
    const bool restore = AssetViewExpanded;
    PanelSplit->setStretchFactor(1, restore ? 1 : 0);
    PanelSplit->setStretchFactor(0, restore ? 0 : 1);
    PresetsGridWidget->setVisible(restore);
    PropertiesTabs->setVisible(restore);
    ToggleAssetsViewButton->setIcon(
        QIcon(restore ? QStringLiteral(":icons/next.png") : QStringLiteral(":icons/prev.png")));
    for (int tab = 1; tab < GCTabs->count(); ++tab) {
        GCTabs->setTabEnabled(tab, restore);
    }
    AssetViewExpanded = !restore;
}
