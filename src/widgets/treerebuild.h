#pragma once

#include <QPointer>
#include <QTreeWidget>

/// One refresh of a list's rows. The event loop runs inside, so that a nested refresh may overtake this one, or the
/// list may be closed.
class TreeRebuild {
public:
    /// `latest` numbers the refreshes of one list, and lives as long as the list. When rows come, go or move, updates
    /// are off until the end, and the scroll position is kept.
    TreeRebuild(QTreeWidget* tree, int& latest, bool rowsChange = true);
    ~TreeRebuild();
    TreeRebuild(const TreeRebuild&) = delete;
    TreeRebuild& operator=(const TreeRebuild&) = delete;

    /// Handles what is pending, which also lays out the new rows. False when the list is gone or shows newer rows than
    /// these: the caller must leave everything as it is then.
    bool ProcessEvents();

private:
    bool IsLatest() const { return Tree && Latest == Number; }

    QPointer<QTreeWidget> Tree;
    int& Latest;  ///< not to be touched once the list is gone
    int Number;
    int ScrollPosition;
    bool RowsChange;
};
