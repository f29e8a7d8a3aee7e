#include "presetbuilder.h"

#include "assetbrowser.h"
#include "log.h"
#include "metadata_cache.h"
#include "sessionmanager.h"
#include "simulator.h"
#include "text/assettext.h"
#include "text/refusaltext.h"

#include <zorvic/layout.h>
#include <zorvic/session.h>

#include <algorithm>

void PresetBuilder::OnPaneClicked(Simulator::SimulatorPaneWidget* pane) {
    Zorvic::CanvasInfo* const canvas = pane->GetCfg().Canvas;
    if (!canvas) return;
    if (canvas->Assets.size() == 1) {
        canvas->Assets.clear();
        pane->LoadButtonStates({});
        pane->SetConfig(pane->GetCfg());
        FailureLabel->clear();
        RedrawKeepingForm();
        return;
    }
    disconnect(BrowserDialog.get(), &AssetBrowser::ItemsChosen, nullptr, nullptr);
    connect(BrowserDialog.get(), &AssetBrowser::ItemsChosen, pane,
            [this, pane](const QStringList& paths) { OnAssetsChosen(pane, paths); });
    BrowserDialog->show();
    BrowserDialog->raise();
    BrowserDialog->activateWindow();
}

void PresetBuilder::OnAssetsChosen(Simulator::SimulatorPaneWidget* pane, const QStringList& paths) {
    Zorvic::CanvasInfo* const canvas = pane->GetCfg().Canvas;
    if (paths.isEmpty() || !canvas) return;
    canvas->Assets.clear();
    if (!Attach(paths.front().toStdString(), *canvas)) return;
    pane->SetConfig(pane->GetCfg());
    BrowserDialog->hide();
    FailureLabel->clear();
    RedrawKeepingForm();
}

bool PresetBuilder::Attach(const std::string& path, Zorvic::CanvasInfo& canvas) {
    const std::unique_ptr<Zorvic::AssetMetadata> metadata(MDCache.LookupAsset(path));
    if (!metadata) {
        ZORVIC_LOG_ERROR << "Unable to get asset metadata for asset " << path;
        ShowNotTaken(path, WhyNoMetadata(path));
        return false;
    }
    const auto& size = metadata->Resolution;
    if (Zorvic::AttachAssetToCanvas(Zorvic::ZORVIC_ECALIGN_SCALED_CENTERED, path, size, canvas) ==
        Zorvic::ZORVIC_STATUS_OK)
        return true;
    ShowNotTaken(path, tr("its picture of %1x%2 cannot be placed").arg(size.Width).arg(size.Height));
    return false;
}

void PresetBuilder::ShowNotTaken(const std::string& path, const QString& why) {
    const QString name = QString::fromStdString(StripPathFromFilename(path));
    BrowserDialog->ShowNotice(tr("%1 was not taken: %2.").arg(name, why));
}

QString PresetBuilder::WhyNoMetadata(const std::string& path) const {
    const auto handle = FindSession(GUID);
    std::vector<Zorvic::Asset> assets;
    if (!handle || handle->GetSession()->GetAssets(assets) != Zorvic::ZORVIC_STATUS_OK)
        return tr("the unit does not answer");
    const auto asset = std::ranges::find(assets, path, &Zorvic::Asset::FullPath);
    return NoMetadataText(asset == assets.end() ? nullptr : &*asset);
}

void PresetBuilder::EndChoosing() {
    disconnect(BrowserDialog.get(), &AssetBrowser::ItemsChosen, nullptr, nullptr);
    BrowserDialog->hide();
}
