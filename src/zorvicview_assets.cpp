#include "zorvicview.h"

#include "assetbrowser.h"
#include "assetsloadingdialog.h"
#include "text/assettext.h"
#include "text/clocktext.h"
#include "text/unitpath.h"
#include "widgets/treerebuild.h"

#include <QCoreApplication>
#include <QIcon>

#include <algorithm>
#include <iostream>

void ZorvicView::WireAssets() {
    connect(ToggleAssetsViewButton, &QPushButton::clicked, this, &ZorvicView::OnAssetToggleClicked);
    connect(AssetImportButton, &QPushButton::clicked, this, &ZorvicView::OnAssetImportClicked);
    connect(AssetDeleteButton, &QPushButton::clicked, this, &ZorvicView::OnAssetDeleteClicked);
}

QTreeWidgetItem* ZorvicView::MakeAssetRow(const Zorvic::Asset& asset) {
    auto* row = new QTreeWidgetItem;
    const auto set = [row](AssetColumn column, const QString& text) {
        row->setText(AssetColumnTypeToIndex(column), text);
    };
    set(AssetColumn::NAME, QString::fromStdString(StripPathFromFilename(asset.FullPath)));
    set(AssetColumn::STATUS, StatusText(asset.Status));
    set(AssetColumn::FOLDER, QString::fromStdString(StripFilenameFromPath(asset.FullPath)));
    set(AssetColumn::SIZE, SizeText(asset.TotalSize));
    if (const std::unique_ptr<Zorvic::AssetMetadata> metadata(MDCache.LookupAsset(asset)); metadata) {
        set(AssetColumn::TRT, ClockText(metadata->Duration));
        set(AssetColumn::DIMENSIONS, DimensionsText(*metadata));
        set(AssetColumn::CODEC, CodecText(*metadata));
        set(AssetColumn::ABITRATE, QString::number(metadata->ASampleRate));
        set(AssetColumn::ACHANNELS, QString::number(metadata->AChannels));
    }
    return row;
}

void ZorvicView::AcceptAssets(const std::vector<Zorvic::Asset>& assets) {
    TreeRebuild rebuild(AssetsView, AssetRebuilds);
    QList<QTreeWidgetItem*> rows;
    for (const auto& asset : assets) {
        rows.append(MakeAssetRow(asset));
    }
    AssetsView->clear();
    AssetsView->addTopLevelItems(rows);
    BrowserDialog->UpdateIngestProgress(assets);
    UpdateAssetsLabel(assets);
    rebuild.ProcessEvents();  // this view may be gone
}

void ZorvicView::UpdateAssetsLabel(const std::vector<Zorvic::Asset>& assets) {
    AssetsLabel->setText(assets.empty() ? tr("<b><font color=\"red\">No assets</font></b>")
                                        : tr("<b>%1</b> assets detected").arg(assets.size()));
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
        const std::unique_ptr<Zorvic::AssetMetadata> metadata(MDCache.LookupAsset(asset));
    }
}

void ZorvicView::OnAssetDeleteClicked() {
    std::vector<std::string> paths;
    for (const auto* row : AssetsView->selectedItems()) {
        paths.push_back(row->text(AssetColumnTypeToIndex(AssetColumn::FOLDER)).toStdString() + '\\' +
                        row->text(AssetColumnTypeToIndex(AssetColumn::NAME)).toStdString());
        std::cout << "Marking asset \"" << paths.back() << "\" for deletion" << std::endl;
    }
    const auto handle = paths.empty() ? nullptr : LookupSession();
    if (!handle) return;
    std::reverse(paths.begin(), paths.end());
    for (const auto& path : paths) {
        if (handle->GetSession()->DeleteAsset(path) != Zorvic::ZORVIC_STATUS_OK) {
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
