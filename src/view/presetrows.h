#pragma once

#include <zorvic/types.h>

#include <QObject>
#include <QSet>
#include <QTreeWidget>

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

class QKeyEvent;

/// The rows of the preset list and the operator's selection among them.
///
/// A row lives as long as its preset: a refresh changes what differs and nothing else. The selected rows are the
/// operator's: they change under his hand, when a preset is gone, or when the unit selects one that is not among them.
class PresetRows : public QObject {
    Q_OBJECT

public:
    /// One preset as the list shows it. The pointers live for the call.
    struct Entry {
        const Zorvic::Preset* Preset;
        const Zorvic::PresetState* State;
        std::optional<Zorvic::TimeCode> TimeCode;  ///< of a preset that stands somewhere
    };

    using NamesByPK = std::unordered_map<int, const std::string*>;

    explicit PresetRows(QTreeWidget* list);

    /// Shows these presets, in this order, then runs `shown`, then the event loop. False when the list is gone then, or
    /// shows newer rows than these.
    bool Show(const std::vector<Entry>& entries, const std::function<void()>& shown);
    /// Another number whenever rows came, went, moved or got another name.
    int NamesRevision() const { return Names; }
    /// Repaints one cell, and no more.
    void ShowTime(int pk, int remainingMS);
    /// The same for a preset that does not play.
    void ShowStanding(const Entry& entry);
    /// Running times lose their colours until they run again.
    void ShowStale();
    /// The unit's own choice, 0 without one. It takes the place of the selection unless it is part of it; then it
    /// becomes the first of it. The rows of a drag stay selected until the drag ends.
    void FollowUnit(int pk);

    /// In the order in which they were chosen.
    std::vector<int> SelectedKeys() const;
    /// All keys, in the order of the rows.
    std::vector<int> Keys() const;
    QTreeWidgetItem* Find(int pk) const;
    /// Hears of everything that happens to the list and its viewport first. True when that is dealt with.
    bool Filter(const QObject* watched, QEvent* event);

signals:
    /// The operator chose.
    void SelectionChanged();
    /// A drag has ended, rows may have moved.
    void Dropped();

private:
    bool IsDragging() const;
    void OnSelectionChanged();
    void OnCurrentChanged(QTreeWidgetItem* row);
    /// True when the list must not see it.
    bool OnKey(const QKeyEvent& key);
    void MoveSelected(int step);
    void Merge(const std::vector<Entry>& entries, const NamesByPK& names);
    void Select(const std::vector<int>& keys);
    void Repaint(const QTreeWidgetItem* row);

    QTreeWidget* List;
    QSet<const QObject*> Widgets;  ///< in the list
    std::vector<int> DroppedKeys;  ///< what was selected when the rows of a drag were let go
    bool MovedByKey = false;
    int Rebuilds = 0;
    int Names = 0;
};
