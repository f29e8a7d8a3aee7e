#include "treerebuild.h"

#include <QCoreApplication>
#include <QScrollBar>

TreeRebuild::TreeRebuild(QTreeWidget* tree, State& shared) : Tree(tree), Shared(shared), Number(++shared.Latest) {
    // A nested rebuild finds the bar already reset by the clearing of the outer one.
    if (Shared.Running++ == 0) {
        Shared.ScrollPosition = tree->verticalScrollBar()->value();
    }
    tree->setUpdatesEnabled(false);
}

TreeRebuild::~TreeRebuild() {
    if (!Tree) return;
    --Shared.Running;
    if (IsLatest()) {
        Tree->verticalScrollBar()->setSliderPosition(Shared.ScrollPosition);
        Tree->setUpdatesEnabled(true);
    }
}

bool TreeRebuild::ProcessEvents() {
    QCoreApplication::processEvents();
    return IsLatest();
}
