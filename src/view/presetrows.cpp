#include "view/presetrows.h"

#include "text/timetext.h"
#include "widgets/remainingcell.h"
#include "widgets/rowmerge.h"
#include "widgets/treerebuild.h"
#include "zorvicview.h"

#include <QDrag>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QStringBuilder>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace {

using PresetColumn = ZorvicView::PresetColumn;
using NamesByPK = PresetRows::NamesByPK;

constexpr int Index(PresetColumn column) {
    return ZorvicView::PresetColumnTypeToIndex(column);
}

/// A row with the values that its texts were made of: comparing them is a fraction of making the texts again.
class PresetRow : public QTreeWidgetItem {
public:
    explicit PresetRow(int pk) : PK(pk) {
        setText(Index(PresetColumn::PK), QString::number(pk));
        setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
        setFlags(flags() & ~Qt::ItemFlags(Qt::ItemIsDropEnabled));
    }

    /// True when the row needs to be painted anew and the list does not know it.
    bool Show(const PresetRows::Entry& entry, const NamesByPK& names);
    bool ShowTime(const PresetRows::Entry& entry);
    bool ShowRemaining(int remainingMS);
    void ShowStale();
    const std::string& Name() const { return ShownName; }

    const int PK;

private:
    void ShowPreset(const Zorvic::Preset& preset, int lengthMS, const NamesByPK& names);
    void ShowLink(int link, const NamesByPK& names);
    bool ShowState(const Zorvic::PresetState& state);

    bool IsNew = true;
    std::string ShownName;
    std::string Notes;
    int LengthMS = 0;
    int Loop = 0;
    int Link = 0;
    std::string LinkName;
    bool IsPlaying = false;
    bool IsPaused = false;
    std::optional<int> RemainingMS;
    std::optional<int> ShownLengthMS;
};

template <typename Value>
bool Replace(Value& shown, const Value& value) {
    if (shown == value) return false;
    shown = value;
    return true;
}

bool PresetRow::Show(const PresetRows::Entry& entry, const NamesByPK& names) {
    ShowPreset(*entry.Preset, TrimmedLength(*entry.Preset, *entry.State), names);
    // Icon and time change in every show, and never the width of their columns: hearing of them, the list would measure
    // all columns again.
    const QSignalBlocker blocker(treeWidget() ? treeWidget()->model() : nullptr);
    const bool time = ShowTime(entry);
    return ShowState(*entry.State) || time;
}

void PresetRow::ShowPreset(const Zorvic::Preset& preset, int lengthMS, const NamesByPK& names) {
    if (Replace(ShownName, preset.Name)) setText(Index(PresetColumn::NAME), QString::fromStdString(ShownName));
    if (Replace(Notes, preset.Notes)) setText(Index(PresetColumn::NOTES), QString::fromStdString(Notes));
    if (Replace(LengthMS, lengthMS) || IsNew) setText(Index(PresetColumn::TRT), ClockText(LengthMS));
    if (Replace(Loop, preset.Loop) || IsNew) {
        setText(Index(PresetColumn::LOOP), Loop == -1 ? QString(QChar(0x221E)) : QString::number(Loop));
    }
    ShowLink(preset.Link, names);
    IsNew = false;
}

void PresetRow::ShowLink(int link, const NamesByPK& names) {
    const auto linked = link > 0 ? names.find(link) : names.end();
    const bool hasLink = linked != names.end();
    const bool differs = Replace(Link, hasLink ? link : 0);
    if (!Replace(LinkName, hasLink ? *linked->second : std::string()) && !differs) return;
    setText(Index(PresetColumn::LINK),
            hasLink ? QString(QString::number(Link) % QStringLiteral(" - ") % QString::fromStdString(LinkName))
                    : QString());
}

bool PresetRow::ShowState(const Zorvic::PresetState& state) {
    const bool plays = Replace(IsPlaying, state.IsPlaying);
    if (!Replace(IsPaused, state.IsPaused) && !plays) return false;
    QIcon icon;
    if (const QPixmap pixmap = ZorvicView::GetIconForPreset(state); !pixmap.isNull()) {
        icon.addPixmap(pixmap);
        icon.addPixmap(pixmap, QIcon::Selected);  // as it is: blended with the highlight it is hard to read
    }
    setIcon(Index(PresetColumn::STATUS), icon);
    setData(Index(PresetColumn::STATUS), Qt::AccessibleTextRole,
            !state.IsPlaying ? QString()
            : state.IsPaused ? ZorvicView::tr("Paused")
                             : ZorvicView::tr("Playing"));
    return true;
}

bool PresetRow::ShowTime(const PresetRows::Entry& entry) {
    if (entry.TimeCode) return ShowRemaining(WrapSubtract(entry.TimeCode->Time, entry.Preset->OutPosition));
    // What plays goes on showing its last time until the next one comes.
    if (entry.State->IsPlaying && RemainingMS) return false;
    RemainingMS.reset();
    return Replace(ShownLengthMS, std::optional(LengthMS)) && ShowLength(this, Index(PresetColumn::TIME), LengthMS);
}

bool PresetRow::ShowRemaining(int remainingMS) {
    ShownLengthMS.reset();
    return Replace(RemainingMS, std::optional(remainingMS)) &&
           ::ShowRemaining(this, Index(PresetColumn::TIME), remainingMS);
}

void PresetRow::ShowStale() {
    setForeground(Index(PresetColumn::TIME), {});
    RemainingMS.reset();
    ShownLengthMS.reset();
}

/// The list holds no other rows.
PresetRow& AsPresetRow(QTreeWidgetItem& row) {
    return static_cast<PresetRow&>(row);
}

int KeyOf(const QTreeWidgetItem& row) {
    return static_cast<const PresetRow&>(row).PK;
}

/// Of the presets that others link to, which are few.
NamesByPK LinkedNames(const std::vector<PresetRows::Entry>& entries) {
    NamesByPK names;
    for (const auto& entry : entries)
        if (entry.Preset->Link > 0) names.emplace(entry.Preset->Link, nullptr);
    if (names.empty()) return names;
    for (const auto& entry : entries)
        if (const auto found = names.find(entry.Preset->PK); found != names.end()) found->second = &entry.Preset->Name;
    std::erase_if(names, [](const auto& name) { return !name.second; });
    return names;
}

std::vector<int> KeysOf(const QList<QTreeWidgetItem*>& rows) {
    std::vector<int> keys;
    for (const auto* row : rows)
        keys.push_back(KeyOf(*row));
    return keys;
}

/// Where the current cell stands, so that typing looks names up.
constexpr int CurrentColumn = Index(PresetColumn::NAME);

}  // namespace

PresetRows::PresetRows(QTreeWidget* list) : List(list) {
    for (const auto* const child : List->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        Widgets.insert(child);
    connect(List, &QTreeWidget::itemSelectionChanged, this, &PresetRows::OnSelectionChanged);
    connect(List, &QTreeWidget::currentItemChanged, this, &PresetRows::OnCurrentChanged);
}

bool PresetRows::Show(const std::vector<Entry>& entries, const std::function<void()>& shown) {
    const auto keys = Keys();
    const bool sameRows = std::equal(keys.begin(), keys.end(), entries.begin(), entries.end(),
                                     [](int key, const Entry& entry) { return key == entry.Preset->PK; });
    TreeRebuild rebuild(List, Rebuilds, !sameRows);
    {
        // Only the operator's own choice selects on the unit. Two consoles that answered each other's refreshes would
        // never come to rest.
        const QSignalBlocker blocker(List);
        const auto names = LinkedNames(entries);
        if (!sameRows) Merge(entries, names);
        for (int place = 0; place < List->topLevelItemCount(); ++place) {
            auto& row = AsPresetRow(*List->topLevelItem(place));
            const auto& entry = entries[static_cast<std::size_t>(place)];
            if (row.Name() != entry.Preset->Name) ++Names;
            if (row.Show(entry, names)) Repaint(&row);
        }
    }
    if (!sameRows) ++Names;
    shown();
    return rebuild.ProcessEvents();
}

void PresetRows::Merge(const std::vector<Entry>& entries, const NamesByPK& names) {
    QList<int> wanted;
    for (const auto& entry : entries)
        wanted.append(entry.Preset->PK);
    const auto make = [&](int place) {
        const auto& entry = entries[static_cast<std::size_t>(place)];
        auto row = std::make_unique<PresetRow>(entry.Preset->PK);
        row->Show(entry, names);
        return row.release();
    };
    const auto selected = SelectedKeys();
    if (MergeRows(*List, wanted, KeyOf, make)) Select(selected);
}

void PresetRows::Repaint(const QTreeWidgetItem* row) {
    List->viewport()->update(List->visualItemRect(row));
}

void PresetRows::ShowTime(int pk, int remainingMS) {
    auto* const row = Find(pk);
    if (!row) return;
    const QSignalBlocker blocker(List->model());
    if (AsPresetRow(*row).ShowRemaining(remainingMS)) Repaint(row);
}

void PresetRows::ShowStanding(const Entry& entry) {
    auto* const row = Find(entry.Preset->PK);
    if (!row) return;
    const QSignalBlocker blocker(List->model());
    if (AsPresetRow(*row).ShowTime(entry)) Repaint(row);
}

void PresetRows::ShowStale() {
    for (int place = 0; place < List->topLevelItemCount(); ++place)
        AsPresetRow(*List->topLevelItem(place)).ShowStale();
}

void PresetRows::FollowUnit(int pk) {
    auto* const row = Find(pk);
    if (!row || IsDragging()) return;
    auto keys = SelectedKeys();
    const auto found = std::find(keys.begin(), keys.end(), pk);
    if (found == keys.begin() && found != keys.end()) return;
    if (found == keys.end()) {
        const QSignalBlocker blocker(List);
        // The flags are given because the default ones depend on the keys that happen to be held down.
        List->setCurrentItem(row, CurrentColumn, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    } else {
        std::rotate(keys.begin(), found, found + 1);
        Select(keys);
    }
}

void PresetRows::Select(const std::vector<int>& keys) {
    const QSignalBlocker blocker(List);
    std::unordered_map<int, int> places;
    for (int place = 0; place < List->topLevelItemCount(); ++place)
        places.emplace(KeyOf(*List->topLevelItem(place)), place);
    QItemSelection rows;
    for (const int key : keys) {
        const auto place = places.find(key);
        if (place == places.end()) continue;
        const auto index = List->model()->index(place->second, 0);
        rows.append(QItemSelectionRange(index, index.siblingAtColumn(List->columnCount() - 1)));
    }
    List->selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
}

std::vector<int> PresetRows::SelectedKeys() const {
    return KeysOf(List->selectedItems());
}

std::vector<int> PresetRows::Keys() const {
    std::vector<int> keys;
    keys.reserve(static_cast<std::size_t>(List->topLevelItemCount()));
    for (int place = 0; place < List->topLevelItemCount(); ++place)
        keys.push_back(KeyOf(*List->topLevelItem(place)));
    return keys;
}

QTreeWidgetItem* PresetRows::Find(int pk) const {
    for (int place = 0; place < List->topLevelItemCount(); ++place) {
        if (auto* const row = List->topLevelItem(place); KeyOf(*row) == pk) return row;
    }
    return nullptr;
}

/// The drag object lives until the move has been reported.
bool PresetRows::IsDragging() const {
    return List->findChild<QDrag*>(QString(), Qt::FindDirectChildrenOnly) != nullptr;
}

/// Moving rows takes them out of the list and out of its selection: that is nobody's choice.
void PresetRows::OnSelectionChanged() {
    if (!IsDragging()) emit SelectionChanged();
}

/// Only keys move the view: a click is on a visible row, and what another console selects must not scroll the list
/// away under the mouse.
void PresetRows::OnCurrentChanged(QTreeWidgetItem* row) {
    if (row && MovedByKey) List->scrollToItem(row);
}

bool PresetRows::OnKey(const QKeyEvent& key) {
    MovedByKey = true;
    if (key.modifiers() == Qt::AltModifier && (key.key() == Qt::Key_Up || key.key() == Qt::Key_Down)) {
        MoveSelected(key.key() == Qt::Key_Up ? -1 : 1);
        return true;
    }
    if (key.text().isEmpty()) return false;
    // Typing looks up the text of the current column, which is wherever the last click fell.
    if (const auto current = List->currentIndex(); current.isValid()) {
        List->selectionModel()->setCurrentIndex(current.siblingAtColumn(CurrentColumn), QItemSelectionModel::NoUpdate);
    }
    return false;
}

/// As if they were dragged one row up or down. What is at the end of the list stays there.
void PresetRows::MoveSelected(int step) {
    if (IsDragging()) return;
    const auto selected = SelectedKeys();
    const auto before = Keys();
    auto keys = before;
    const auto isSelected = [&](int key) { return std::ranges::find(selected, key) != selected.end(); };
    const auto swapAll = [&](auto first, auto last) {
        for (auto at = first; at != last && std::next(at) != last; ++at)
            if (!isSelected(*at) && isSelected(*std::next(at))) std::iter_swap(at, std::next(at));
    };
    step < 0 ? swapAll(keys.begin(), keys.end()) : swapAll(keys.rbegin(), keys.rend());
    if (keys == before) return;
    auto* const current = List->currentItem();
    {
        const QSignalBlocker blocker(List);
        MergeRows(*List, QList<int>(keys.begin(), keys.end()), KeyOf, [](int) { return new PresetRow(0); });
        List->setCurrentItem(current, CurrentColumn, QItemSelectionModel::NoUpdate);
        Select(selected);
    }
    List->scrollToItem(current);
    emit Dropped();
}

// A drag inside the list ends with the removal of its drag object, after the rows were moved. Widgets that come and go
// (and the delegate, at the end) have moved nothing.
bool PresetRows::Filter(const QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::Drop:
            DroppedKeys = SelectedKeys();
            break;
        case QEvent::MouseButtonPress:
            MovedByKey = false;
            break;
        case QEvent::KeyPress:
            return watched == List && OnKey(*static_cast<QKeyEvent*>(event));
        case QEvent::ChildAdded:
            if (const auto* child = static_cast<QChildEvent*>(event)->child(); watched == List && child->isWidgetType())
                Widgets.insert(child);
            break;
        case QEvent::ChildRemoved:
            // By what it is not: a dying object is no QDrag any more, and with Qt 6 no widget either.
            if (const auto* child = static_cast<QChildEvent*>(event)->child();
                watched == List && !Widgets.remove(child) && child != List->itemDelegate()) {
                if (!DroppedKeys.empty()) Select(std::exchange(DroppedKeys, {}));
                emit Dropped();
                return true;
            }
            break;
        default:
            break;
    }
    return false;
}
