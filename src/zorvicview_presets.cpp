#include "zorvicview.h"

#include "log.h"
#include "playheadwidget.h"
#include "presetbuilder.h"
#include "simulator.h"
#include "text/clocktext.h"
#include "text/remainingtime.h"
#include "widgets/presettreedelegate.h"
#include "widgets/treerebuild.h"

#include <QMenu>
#include <QPointer>
#include <QSignalBlocker>

#include <algorithm>
#include <iostream>
#include <tuple>
#include <utility>

namespace {

using PresetColumn = ZorvicView::PresetColumn;
using PresetsByPK = std::unordered_map<int, const Zorvic::Preset*>;

constexpr int Index(PresetColumn column) {
    return ZorvicView::PresetColumnTypeToIndex(column);
}

int KeyOf(const QTreeWidgetItem* row) {
    return row->text(Index(PresetColumn::PK)).toInt();
}

std::vector<int> KeysOf(const QList<QTreeWidgetItem*>& rows) {
    std::vector<int> keys;
    keys.reserve(static_cast<std::size_t>(rows.size()));
    std::transform(rows.begin(), rows.end(), std::back_inserter(keys), KeyOf);
    return keys;
}

/// A sorted copy. Presets of one place are in order of PK, so that they do not swap from refresh to refresh.
std::vector<Zorvic::Preset> SortedForTab(const std::vector<Zorvic::Preset>& presets, int tab) {
    std::vector<std::tuple<int, int, const Zorvic::Preset*>> places;
    places.reserve(presets.size());
    for (const auto& preset : presets) {
        places.emplace_back(preset.TabDisplayOrder.at(tab).Index, preset.PK, &preset);
    }
    std::sort(places.begin(), places.end());
    std::vector<Zorvic::Preset> sorted;
    sorted.reserve(presets.size());
    for (const auto& place : places) {
        sorted.push_back(*std::get<2>(place));
    }
    return sorted;
}

PresetsByPK IndexByPK(const std::vector<Zorvic::Preset>& presets) {
    PresetsByPK index;
    index.reserve(presets.size());
    for (const auto& preset : presets) {
        index.emplace(preset.PK, &preset);
    }
    return index;
}

QString LinkText(const Zorvic::Preset& preset, const PresetsByPK& presets) {
    const auto linked = preset.Link > 0 ? presets.find(preset.Link) : presets.end();
    if (linked == presets.end()) return {};
    return QString::number(preset.Link) % QStringLiteral(" - ") % QString::fromStdString(linked->second->Name);
}

QTreeWidgetItem* MakeRow(const Zorvic::Preset& preset, const Zorvic::PresetState& state, const PresetsByPK& presets) {
    const QString length = ClockText(TrimmedLength(preset, state));
    const QString loop = preset.Loop == -1 ? QString(QChar(0x221E)) : QString::number(preset.Loop);
    auto* row =
        new QTreeWidgetItem({QString(), QString::number(preset.PK), QString::fromStdString(preset.Name),
                             QString::fromStdString(preset.Notes), length, length, loop, LinkText(preset, presets)});
    row->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
    row->setFlags(row->flags() & ~Qt::ItemFlags(Qt::ItemIsDropEnabled));
    const QPixmap pixmap = ZorvicView::GetIconForPreset(state);
    if (!pixmap.isNull()) {
        QIcon icon(pixmap);
        icon.addPixmap(pixmap, QIcon::Selected);  // as it is: blended with the highlight it is hard to read
        row->setIcon(Index(PresetColumn::STATUS), icon);
    }
    return row;
}

template <typename Record>
std::unique_ptr<Record> FindByPK(const std::vector<Record>& records, int pk) {
    const auto found = std::find_if(records.begin(), records.end(), [pk](const Record& r) { return r.PK == pk; });
    return found == records.end() ? nullptr : std::make_unique<Record>(*found);
}

}  // namespace

void ZorvicView::SetUpPresetList() {
    PresetsView->setStyleSheet(QStringLiteral("border: 0px; border-radius: 0px;"));
    PresetTreeDelegateObj = std::make_unique<PresetTreeDelegate>(PresetsView);
    PresetsView->setItemDelegate(PresetTreeDelegateObj.get());
    PresetsView->installEventFilter(this);
    PresetsView->viewport()->installEventFilter(this);
    PresetsView->setContextMenuPolicy(Qt::CustomContextMenu);
}

void ZorvicView::WirePresetList() {
    connect(PresetsView, &QTreeWidget::itemSelectionChanged, this, &ZorvicView::OnPresetSelected);
    connect(PresetsView, &QTreeWidget::customContextMenuRequested, this, &ZorvicView::OnPresetRightClick);
    connect(AddPresetButton, &QPushButton::clicked, this, &ZorvicView::ToggleCreatePreset);
    connect(DeletePresetsButton, &QPushButton::clicked, this, &ZorvicView::DeleteSelectedPresets);
    connect(DupPresetsButton, &QPushButton::clicked, this, &ZorvicView::CloneSelectedPresets);
    connect(EditPresetButton, &QPushButton::clicked, this, &ZorvicView::EditSelectedPreset);
}

void ZorvicView::AcceptPresets(const std::vector<Zorvic::Preset>& list) {
    const auto handle = LookupSession();
    if (!handle) return;
    const auto states = GetPresetStates(handle->GetSession());
    auto sorted = SortedForTab(list, CurPresetTab);
    if (sorted.empty()) {
        UpdatePresetLabels({});
    } else if (FillPresetList(sorted, states)) {
        PresetDialog->UpdateCachedPresets(std::move(sorted));
    }
}

/// False when the view is gone or newer rows are shown.
bool ZorvicView::FillPresetList(const std::vector<Zorvic::Preset>& sorted,
                                const std::unordered_map<int, Zorvic::PresetState>& states) {
    TreeRebuild rebuild(PresetsView, PresetRebuilds);
    {
        // Only the operator's own choice selects on the unit. Two consoles that answered each other's refreshes would
        // never come to rest.
        const QSignalBlocker blocker(PresetsView);
        const auto index = IndexByPK(sorted);
        QList<QTreeWidgetItem*> rows;
        std::vector<std::tuple<QTreeWidgetItem*, const Zorvic::Preset*, const Zorvic::PresetState*>> current;
        static const Zorvic::PresetState Unknown;
        for (const auto& preset : sorted) {
            const auto found = states.find(preset.PK);
            const auto& state = found == states.end() ? Unknown : found->second;
            rows.append(MakeRow(preset, state, index));
            if (state.IsSelected) {
                current.emplace_back(rows.last(), &preset, &state);
            }
        }
        PresetsView->clear();
        PresetsView->addTopLevelItems(rows);
        for (const auto& [row, preset, state] : current) {
            ShowCurrentPreset(row, *preset, *state);
        }
    }
    return rebuild.ProcessEvents();
}

void ZorvicView::ShowCurrentPreset(QTreeWidgetItem* row, const Zorvic::Preset& preset,
                                   const Zorvic::PresetState& state) {
    // The flags are given because the default ones depend on the keys that happen to be held down.
    PresetsView->setCurrentItem(row, 0, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    ShowRestingState(preset, state);
    const QPixmap icon = state.IsPlaying ? GetIconForPreset(state) : QPixmap(QStringLiteral(":icons/end.png"));
    StatusIconLabel->setPixmap(icon.scaled(24, 24, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    if (!state.IsPlaying || state.IsPaused) {
        LChannelVol->setValue(0);
        RChannelVol->setValue(0);
    }
    SetVideoSliderPlayers(preset);
    UpdateVideoSliders(preset);
    SetVolSliders(preset);
    UpdateGCs(preset, state);
    UpdatePresetLabels(preset);
    Simulator->SetPreset(std::make_unique<Zorvic::Preset>(preset).release(),
                         std::make_unique<Zorvic::PresetState>(state).release(), true);
    ScrubBar->SetTrim(preset.InPosition, preset.OutPosition);
    ScrubBar->SetShowPlayHead(state.IsPlaying);
    TRTLabel->setText(ClockText(state.TRT));
}

void ZorvicView::AcceptPresetStates() {
    const auto handle = LookupSession();
    std::vector<Zorvic::Preset> presets;
    if (handle && handle->GetSession()->GetPresets(presets) == Zorvic::ZORVIC_STATUS_OK) {
        AcceptPresets(presets);
    }
}

std::unordered_map<int, Zorvic::PresetState> ZorvicView::GetPresetStates(Zorvic::Session* session) const {
    std::vector<Zorvic::PresetState> states;
    std::unordered_map<int, Zorvic::PresetState> byPK;
    if (session->GetPresetStates(states) != Zorvic::ZORVIC_STATUS_OK) return byPK;
    byPK.reserve(states.size());
    for (const auto& state : states) {
        byPK.emplace(state.PK, state);
    }
    return byPK;
}

QPixmap ZorvicView::GetIconForPreset(const Zorvic::PresetState& state) {
    if (!state.IsPlaying) return {};
    return QPixmap(state.IsPaused ? QStringLiteral(":icons/pause.png") : QStringLiteral(":icons/take.png"));
}

void ZorvicView::UpdatePresetLabels(const Zorvic::Preset& preset) {
    const QString text = preset.Name.empty()
                             ? tr("No preset selected")
                             : tr("<b>Preset:</b> %1").arg(QString::fromStdString(preset.Name).toHtmlEscaped());
    for (auto* label : {CDPresetLabel, GotosPresetLabel, VideoPresetLabel}) {
        label->setText(text);
    }
}

QTreeWidgetItem* ZorvicView::GetSelectedPresetItem() const {
    const auto rows = PresetsView->selectedItems();
    return rows.isEmpty() ? nullptr : rows.first();
}

QList<QTreeWidgetItem*> ZorvicView::GetSelectedPresetItems() const {
    return PresetsView->selectedItems();
}

int ZorvicView::CurrentPK() const {
    const auto* row = GetSelectedPresetItem();
    return row ? KeyOf(row) : 0;
}

std::unique_ptr<Zorvic::Preset> ZorvicView::GetSelectedPreset(Zorvic::Session* session) const {
    const auto* row = GetSelectedPresetItem();
    if (!row) return nullptr;
    const auto handle = session ? nullptr : LookupSession();
    if (handle) {
        session = handle->GetSession();
    }
    return session ? LookupPreset(session, KeyOf(row)) : nullptr;
}

std::unordered_map<int, Zorvic::Preset> ZorvicView::GetSelectedPresets(Zorvic::Session* session) const {
    std::unordered_map<int, Zorvic::Preset> selected;
    const auto handle = session ? nullptr : LookupSession();
    if (handle) {
        session = handle->GetSession();
    }
    const auto rows = GetSelectedPresetItems();
    std::vector<Zorvic::Preset> presets;
    if (!session || rows.isEmpty() || session->GetPresets(presets) != Zorvic::ZORVIC_STATUS_OK) return selected;
    const auto index = IndexByPK(presets);
    for (const int key : KeysOf(rows)) {
        const auto found = index.find(key);
        selected.emplace(key, found == index.end() ? Zorvic::Preset() : *found->second);
    }
    return selected;
}

std::vector<Zorvic::Preset> ZorvicView::PresentSelection(Zorvic::Session* session) const {
    std::vector<Zorvic::Preset> present;
    for (auto& [key, preset] : GetSelectedPresets(session)) {
        if (preset.PK == key) {
            present.push_back(preset);
        }
    }
    std::sort(present.begin(), present.end(), [](const auto& a, const auto& b) { return a.PK < b.PK; });
    return present;
}

QTreeWidgetItem* ZorvicView::LookupPresetItem(int pk) const {
    const auto rows = PresetsView->findItems(QString::number(pk), Qt::MatchFixedString | Qt::MatchCaseSensitive,
                                             Index(PresetColumn::PK));
    return rows.isEmpty() ? nullptr : rows.first();
}

std::unordered_map<int, QTreeWidgetItem*> ZorvicView::RowsByPK() const {
    std::unordered_map<int, QTreeWidgetItem*> rows;
    for (int i = 0; i < PresetsView->topLevelItemCount(); ++i) {
        rows.emplace(KeyOf(PresetsView->topLevelItem(i)), PresetsView->topLevelItem(i));
    }
    return rows;
}

std::unique_ptr<Zorvic::Preset> ZorvicView::LookupPreset(Zorvic::Session* session, int pk) const {
    std::vector<Zorvic::Preset> presets;
    if (session->GetPresets(presets) != Zorvic::ZORVIC_STATUS_OK) return nullptr;
    return FindByPK(presets, pk);
}

std::unique_ptr<Zorvic::PresetState> ZorvicView::LookupPresetState(Zorvic::Session* session, int pk) const {
    std::vector<Zorvic::PresetState> states;
    if (session->GetPresetStates(states) != Zorvic::ZORVIC_STATUS_OK) return nullptr;
    return FindByPK(states, pk);
}

void ZorvicView::OnPresetSelected() {
    const auto* row = GetSelectedPresetItem();
    if (!row) return;
    const int pk = KeyOf(row);
    ZORVIC_LOG_DEBUG << "Selection changed to PK " << pk;
    const auto handle = LookupSession();
    if (!handle) return;
    auto* session = handle->GetSession();
    const auto state = LookupPresetState(session, pk);
    if (!state) return;
    if (!state->IsSelected) {
        session->SelectPreset(pk);
    }
    SetBaseTRT(session, pk);
}

void ZorvicView::ToggleCreatePreset() {
    PresetDialog->setVisible(!PresetDialog->isVisible());
    PresetDialog->SetPreset({});
}

void ZorvicView::EditSelectedPreset() {
    const auto preset = GetSelectedPreset();
    if (!preset) return;
    PresetDialog->SetPreset(*preset);
    PresetDialog->show();
    PresetDialog->raise();
    PresetDialog->activateWindow();
}

void ZorvicView::OnCreatorDone() {
    const auto handle = LookupSession();
    if (!handle) return;
    if (const std::unique_ptr<Zorvic::Preset> preset(PresetDialog->CompilePreset()); preset) {
        const auto status =
            preset->PK != 0 ? handle->GetSession()->UpdatePreset(*preset) : handle->GetSession()->CreatePreset(*preset);
        if (status != Zorvic::ZORVIC_STATUS_OK) {
            std::cerr << "Failed to create preset with Name " << preset->Name << std::endl;
        }
        PresetDialog->SetPreset({});
    }
}

void ZorvicView::CloneSelectedPresets() {
    const auto handle = LookupSession();
    if (!handle) return;
    for (auto& preset : PresentSelection(handle->GetSession())) {
        preset.PK = 0;
        preset.Name += " - copy";
        handle->GetSession()->CreatePreset(preset);
    }
}

void ZorvicView::DeleteSelectedPresets() {
    const auto keys = SelectedKeys();
    const auto handle = keys.empty() ? nullptr : LookupSession();
    if (!handle) return;
    for (const int key : keys) {
        handle->GetSession()->DeletePreset(key);
    }
}

std::vector<int> ZorvicView::SelectedKeys() const {
    return KeysOf(GetSelectedPresetItems());
}

// The rows under an open menu are rebuilt by every refresh, and another console may select another preset. So the
// operator's choice is noted as keys before the menu opens.
void ZorvicView::OnPresetRightClick(const QPoint& point) {
    const auto keys = SelectedKeys();
    const auto menu = std::make_unique<QMenu>();
    const auto add = [&](const QString& text, void (ZorvicView::*slot)()) {
        auto* action = menu->addAction(text);
        connect(action, &QAction::triggered, this, [this, keys, slot] { RunOnRows(keys, slot); });
        return action;
    };
    add(tr("Edit"), &ZorvicView::EditSelectedPreset)->setEnabled(keys.size() <= 1);
    add(tr("Clone"), &ZorvicView::CloneSelectedPresets);
    add(tr("Delete"), &ZorvicView::DeleteSelectedPresets);
    menu->exec(PresetsView->viewport()->mapToGlobal(point));  // runs the event loop: this view may be gone
}

void ZorvicView::RunOnRows(const std::vector<int>& keys, void (ZorvicView::*slot)()) {
    QList<QTreeWidgetItem*> rows;
    for (const int key : keys) {
        if (auto* row = LookupPresetItem(key)) {
            rows.append(row);
        }
    }
    if (rows.isEmpty()) return;
    {
        const QSignalBlocker blocker(PresetsView);
        PresetsView->clearSelection();
        for (auto* row : rows) {
            row->setSelected(true);
        }
    }
    (this->*slot)();
}

void ZorvicView::RebuildTabOrderings() {
    const auto rows = PresetsView->findItems(QStringLiteral("*"), Qt::MatchWildcard, Index(PresetColumn::STATUS));
    const auto handle = rows.isEmpty() ? nullptr : LookupSession();
    std::vector<Zorvic::Preset> presets;
    if (!handle || handle->GetSession()->GetPresets(presets) != Zorvic::ZORVIC_STATUS_OK) return;
    const auto index = IndexByPK(presets);
    for (int place = 0; place < rows.size(); ++place) {
        const int key = KeyOf(rows.at(place));
        const auto found = index.find(key);
        if (found == index.end()) {
            std::cerr << "No preset " << key << " in Items\n";
            continue;
        }
        Zorvic::Preset preset = *found->second;
        preset.TabDisplayOrder[0].Index = place;
        handle->GetSession()->UpdatePreset(preset);
    }
}
