#include "widgets/treerebuild.h"

#include <QCoreApplication>
#include <QScrollBar>

TreeRebuild::TreeRebuild(QTreeWidget* tree, int& latest)
    : Tree(tree), Latest(latest), Number(++latest), ScrollPosition(tree->verticalScrollBar()->value()) {
    tree->setUpdatesEnabled(false);
}

TreeRebuild::~TreeRebuild() {
    if (!IsLatest()) return;
    Tree->verticalScrollBar()->setSliderPosition(ScrollPosition);
    Tree->setUpdatesEnabled(true);
}

bool TreeRebuild::ProcessEvents() {
    QCoreApplication::processEvents();
    return IsLatest();
}
