#pragma once

#include <QHash>
#include <QListWidget>
#include <QSet>
#include <QTreeWidget>

#include <memory>
#include <type_traits>

/// The rows of a list widget and the top-level rows of a tree widget, by the same names.
inline int RowCount(const QTreeWidget& list) {
    return list.topLevelItemCount();
}
inline int RowCount(const QListWidget& list) {
    return list.count();
}
inline QTreeWidgetItem* RowAt(const QTreeWidget& list, int place) {
    return list.topLevelItem(place);
}
inline QListWidgetItem* RowAt(const QListWidget& list, int place) {
    return list.item(place);
}
inline QTreeWidgetItem* TakeRow(QTreeWidget& list, int place) {
    return list.takeTopLevelItem(place);
}
inline QListWidgetItem* TakeRow(QListWidget& list, int place) {
    return list.takeItem(place);
}
inline void InsertRow(QTreeWidget& list, int place, QTreeWidgetItem* row) {
    list.insertTopLevelItem(place, row);
}
inline void InsertRow(QListWidget& list, int place, QListWidgetItem* row) {
    list.insertItem(place, row);
}

/// Brings a list in line with the wanted keys and changes only what differs: a row that stays keeps its item, and with
/// it an open editor, the scroll position and whatever the operator is about to click. `keyOf(row)` tells a row's key
/// and `make(place)` a new row for a place among the wanted ones; the texts of rows that were there before are the
/// caller's business, and so are the signals of the list. Removing or moving a row makes the list select neighbours of
/// it. The same rows as before are selected at the end; true when they had to be selected again, in the order of the
/// list then.
template <typename List, typename Key, typename KeyOf, typename Make>
bool MergeRows(List& list, const QList<Key>& wanted, const KeyOf& keyOf, const Make& make) {
    using Row = std::remove_pointer_t<decltype(RowAt(list, 0))>;
    const auto selectedRows = list.selectedItems();
    QSet<const Row*> selected(selectedRows.begin(), selectedRows.end());
    bool disturbed = false;

    const QSet<Key> stay(wanted.begin(), wanted.end());
    QSet<Key> present;
    for (int place = RowCount(list) - 1; place >= 0; --place) {
        const Key key = keyOf(*RowAt(list, place));
        if (stay.contains(key) && !present.contains(key)) {
            present.insert(key);
            continue;
        }
        const std::unique_ptr<const Row> gone(TakeRow(list, place));
        selected.remove(gone.get());
        disturbed = true;
    }
    QHash<Key, Row*> held;  // rows that belong further down
    for (int place = 0; place < wanted.size(); ++place) {
        const Key& key = wanted.at(place);
        const auto isAt = [&](int at) { return at < RowCount(list) && keyOf(*RowAt(list, at)) == key; };
        if (isAt(place)) continue;
        if (auto* const row = held.take(key)) {
            InsertRow(list, place, row);
            continue;
        }
        int from = place + 1;
        while (present.contains(key) && from < RowCount(list) && !isAt(from))
            ++from;
        if (!isAt(from)) {
            InsertRow(list, place, make(place));
        } else if (disturbed = true; from == place + 1) {
            auto* const displaced = TakeRow(list, place);
            held.insert(keyOf(*displaced), displaced);
        } else {
            InsertRow(list, place, TakeRow(list, from));
        }
    }
    if (!disturbed) return false;
    list.clearSelection();
    for (int place = 0; place < RowCount(list); ++place)
        if (selected.contains(RowAt(list, place))) RowAt(list, place)->setSelected(true);
    return true;
}
