#include "view/assetrows.h"

#include "text/assettext.h"
#include "text/timetext.h"
#include "widgets/treerebuild.h"
#include "zorvicview.h"

#include <utility>

namespace {

using AssetColumn = ZorvicView::AssetColumn;

constexpr int Index(AssetColumn column) {
    return ZorvicView::AssetColumnTypeToIndex(column);
}

}  // namespace

AssetRows::AssetRows(QTreeWidget* list, QLabel* label, LookUp lookUp)
    : List(list), Label(label), Known(std::move(lookUp)) {}

QTreeWidgetItem* AssetRows::MakeRow(const Zorvic::Asset& asset) const {
    auto* row = new QTreeWidgetItem;
    const auto set = [row](AssetColumn column, const QString& text) { row->setText(Index(column), text); };
    set(AssetColumn::NAME, QString::fromStdString(StripPathFromFilename(asset.FullPath)));
    set(AssetColumn::STATUS, StatusText(asset.Status));
    set(AssetColumn::FOLDER, QString::fromStdString(StripFilenameFromPath(asset.FullPath)));
    set(AssetColumn::SIZE, SizeText(asset.TotalSize));
    if (const auto metadata = Known(asset)) {
        set(AssetColumn::TRT, ClockText(metadata->Duration));
        set(AssetColumn::DIMENSIONS, DimensionsText(*metadata));
        set(AssetColumn::CODEC, CodecText(*metadata));
        set(AssetColumn::ABITRATE, QString::number(metadata->ASampleRate));
        set(AssetColumn::ACHANNELS, QString::number(metadata->AChannels));
    }
    return row;
}

void AssetRows::Show(const std::vector<Zorvic::Asset>& assets, const std::function<void()>& shown) {
    TreeRebuild rebuild(List, Rebuilds);
    QList<QTreeWidgetItem*> rows;
    for (const auto& asset : assets)
        rows.append(MakeRow(asset));
    List->clear();
    List->addTopLevelItems(rows);
    ShowCount(assets.size());
    shown();
    rebuild.ProcessEvents();
}

void AssetRows::ShowCount(std::size_t count) {
    // The red is readable on a dark ground only.
    Label->setBackgroundRole(QPalette::Base);
    Label->setAutoFillBackground(count == 0);
    Label->setText(count == 0 ? ZorvicView::tr("<b><font color=\"red\">No assets</font></b>")
                              : ZorvicView::tr("<b>%1</b> assets detected").arg(count));
}

std::vector<std::string> AssetRows::SelectedPaths() const {
    std::vector<std::string> paths;
    for (const auto* row : List->selectedItems())
        paths.push_back(row->text(Index(AssetColumn::FOLDER)).toStdString() + '\\' +
                        row->text(Index(AssetColumn::NAME)).toStdString());
    return paths;
}
