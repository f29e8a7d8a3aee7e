#include "assetbrowser.h"
AssetBrowser::AssetBrowser(const std::string& guid, bool internalMode) : GUID(guid), InternalMode(internalMode) {
    setupUi(this);
    IngestProgressBar->hide();
    if (InternalMode) {
        PathChoice->setText(QStringLiteral("\\Assets"));
    }
}
QStringList AssetBrowser::GetSelectedPaths() const {
    return {};
}
void AssetBrowser::OnCloseClicked() {
    hide();
}
void AssetBrowser::OnUpClicked() {}
void AssetBrowser::OnSelectClicked() {}
void AssetBrowser::OnFilterChanged(const QString&) {}
void AssetBrowser::OnItemDoubleClicked(QListWidgetItem*) {}
void AssetBrowser::RefreshAll() {}
void AssetBrowser::RefreshDrives() {}
void AssetBrowser::UpdateAssetsList() {}
void AssetBrowser::PerformImport() {}
void AssetBrowser::UpdateIngestProgress(const std::vector<Zorvic::Asset>&) {}
