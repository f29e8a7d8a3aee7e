#include "widgets/treerebuild.h"

#include <QCoreApplication>
#include <QScrollBar>

TreeRebuild::TreeRebuild(QTreeWidget* tree, int& latest, bool rowsChange)
    : Tree(tree),
      Latest(latest),
      Number(++latest),
      ScrollPosition(tree->verticalScrollBar()->value()),
      RowsChange(rowsChange) {
    // Switching them on again repaints everything.
    if (RowsChange) tree->setUpdatesEnabled(false);
}

TreeRebuild::~TreeRebuild() {
    if (!Tree || !RowsChange) return;
    if (IsLatest()) Tree->verticalScrollBar()->setSliderPosition(ScrollPosition);
    Tree->setUpdatesEnabled(true);
}

bool TreeRebuild::ProcessEvents() {
    QCoreApplication::processEvents();
    return IsLatest();
}
