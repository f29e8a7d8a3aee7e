#pragma once

#include <zorvic/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

/// The list of the unit's assets.
class AssetRows {
public:
    using Metadata = std::unique_ptr<const Zorvic::AssetMetadata>;
    using LookUp = std::function<Metadata(const Zorvic::Asset&)>;

    /// `lookUp` tells what is known of an asset; null when nothing is.
    AssetRows(QTreeWidget* list, QLabel* label, LookUp lookUp);

    /// Shows these assets in the order given; none is selected. `shown` runs before the event loop does, after which
    /// the list may be gone.
    void Show(const std::vector<Zorvic::Asset>& assets, const std::function<void()>& shown);
    void ShowCount(std::size_t count);
    /// Full paths, in the order in which they were selected.
    std::vector<std::string> SelectedPaths() const;

private:
    QTreeWidgetItem* MakeRow(const Zorvic::Asset& asset) const;

    QTreeWidget* List;
    QLabel* Label;
    LookUp Known;
    int Rebuilds = 0;
};
