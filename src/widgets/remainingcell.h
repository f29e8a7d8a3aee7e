#pragma once

class QTreeWidgetItem;

// Both write only what differs, and tell whether anything did.

/// A time left, in the colour of its urgency.
bool ShowRemaining(QTreeWidgetItem* row, int column, int remainingMS);
/// A time that does not run.
bool ShowLength(QTreeWidgetItem* row, int column, int lengthMS);
