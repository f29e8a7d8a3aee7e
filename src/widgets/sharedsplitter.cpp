#include "widgets/sharedsplitter.h"

namespace {

/// Sizes of the parts where the operator left them; empty until then.
QList<int> LeftAt;

}  // namespace

SharedSplitter::SharedSplitter(QWidget* parent) : QSplitter(parent) {
    connect(this, &QSplitter::splitterMoved, this, [this] { LeftAt = sizes(); });
}

void SharedSplitter::showEvent(QShowEvent* event) {
    QSplitter::showEvent(event);
    if (!LeftAt.isEmpty()) setSizes(LeftAt);
}
