#pragma once

class QModelIndex;
class QPainter;
class QStyleOptionViewItem;
class QTreeWidgetItem;

// Both write only what differs, and tell whether anything did.

/// A time left, in the colour of its urgency.
bool ShowRemaining(QTreeWidgetItem* row, int column, int remainingMS);
/// A time that does not run.
bool ShowLength(QTreeWidgetItem* row, int column, int lengthMS);

/// For delegates, after they have painted a cell: a selection would paint over the colour of a time. There it stands on
/// a ground of its own. `indent` is where the text begins beyond the margin that the style gives it.
void PaintOnSelection(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index, int indent);
