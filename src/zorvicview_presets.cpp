#include "zorvicview.h"

#include "log.h"
#include "playheadwidget.h"
#include "presetbuilder.h"
#include "simulator.h"
#include "text/refusaltext.h"
#include "text/timetext.h"
#include "view/marktables.h"
#include "view/mixdesk.h"
#include "view/presetrows.h"
#include "view/timecodes.h"
#include "widgets/menuletters.h"
#include "widgets/presettreedelegate.h"

#include <QMenu>

#include <algorithm>
#include <iostream>
#include <tuple>
#include <utility>

namespace {

using Places = std::vector<std::tuple<int, int, const Zorvic::Preset*>>;

/// Presets of one place are in order of PK, so that they do not swap from refresh to refresh.
Places SortedForTab(const std::vector<Zorvic::Preset>& presets, int tab) {
    Places places;
    places.reserve(presets.size());
    for (const auto& preset : presets)
        places.emplace_back(preset.TabDisplayOrder.at(tab).Index, preset.PK, &preset);
    std::sort(places.begin(), places.end());
    return places;
}

std::vector<PresetRows::Entry> MakeEntries(Round& round, const Places& places) {
    static const Zorvic::PresetState Unknown;
    std::vector<PresetRows::Entry> entries;
    entries.reserve(places.size());
    for (const auto& [place, pk, preset] : places) {
        const auto* const state = round.FindState(pk);
        auto& entry = entries.emplace_back(PresetRows::Entry{preset, state ? state : &Unknown, std::nullopt});
        if (entry.State->IsPaused || entry.State->IsSelected) entry.TimeCode = round.FindTimeCode(pk);
    }
    return entries;
}

/// Without a look at what the unit holds now, nothing is written over it.
Zorvic::StatusCode Store(Round& round, const Zorvic::Preset& preset) {
    const bool isNew = preset.PK == 0;
    if (!round.Session() || (!isNew && !round.Presets())) return Zorvic::ZORVIC_STATUS_NETWORKERROR;
    return isNew ? round.Session()->CreatePreset(preset) : round.Session()->UpdatePreset(preset);
}

}  // namespace

void ZorvicView::SetUpPresetList() {
    PresetsView->setStyleSheet(QStringLiteral("border: 0px; border-radius: 0px;"));
    PresetTreeDelegateObj = std::make_unique<PresetTreeDelegate>(PresetsView);
    PresetsView->setItemDelegate(PresetTreeDelegateObj.get());
    PresetsView->setContextMenuPolicy(Qt::CustomContextMenu);
    PresetsView->viewport()->setAttribute(Qt::WA_Hover);
}

void ZorvicView::WirePresetList() {
    PresetsView->installEventFilter(this);
    PresetsView->viewport()->installEventFilter(this);
    connect(Rows.get(), &PresetRows::SelectionChanged, this, &ZorvicView::OnPresetSelected);
    connect(Rows.get(), &PresetRows::Dropped, this, &ZorvicView::RebuildTabOrderings);
    connect(PresetsView, &QTreeWidget::customContextMenuRequested, this, &ZorvicView::OnPresetRightClick);
    connect(AddPresetButton, &QPushButton::clicked, this, &ZorvicView::ToggleCreatePreset);
    connect(DeletePresetsButton, &QPushButton::clicked, this, &ZorvicView::DeleteSelectedPresets);
    connect(DupPresetsButton, &QPushButton::clicked, this, &ZorvicView::CloneSelectedPresets);
    connect(EditPresetButton, &QPushButton::clicked, this, &ZorvicView::EditSelectedPreset);
}

void ZorvicView::AcceptPresets(const std::vector<Zorvic::Preset>& list) {
    auto round = BeginRound();
    if (round.Session()) ShowPresets(round, list);
}

void ZorvicView::AcceptPresetStates() {
    auto round = BeginRound();
    RefreshPresets(round);
}

/// False when the unit does not tell.
bool ZorvicView::RefreshPresets(Round& round) {
    const auto* const presets = round.Presets();
    if (presets) ShowPresets(round, *presets);
    return presets != nullptr;
}

void ZorvicView::ShowPresets(Round& round, const std::vector<Zorvic::Preset>& list) {
    const auto places = SortedForTab(list, CurPresetTab);
    if (places.empty()) {
        ShowNoPreset();
        return;
    }
    const auto entries = MakeEntries(round, places);
    const auto selected = std::find_if(entries.rbegin(), entries.rend(),
                                       [](const PresetRows::Entry& entry) { return entry.State->IsSelected; });
    const int namesBefore = Rows->NamesRevision();
    const bool isShown = Rows->Show(entries, [&] {
        if (selected == entries.rend()) {
            if (Rows->SelectedKeys().empty()) ShowNoPreset();
            return;
        }
        Rows->FollowUnit(selected->Preset->PK);
        ShowCurrentPreset(*selected->Preset, *selected->State, selected->TimeCode);
    });
    if (!isShown || Rows->NamesRevision() == namesBefore) return;
    std::vector<Zorvic::Preset> sorted;
    sorted.reserve(places.size());
    for (const auto& place : places)
        sorted.push_back(*std::get<const Zorvic::Preset*>(place));
    PresetDialog->UpdateCachedPresets(std::move(sorted));
}

void ZorvicView::ShowCurrentPreset(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                                   const std::optional<Zorvic::TimeCode>& timeCode) {
    Clock->ShowPreset(preset, state, timeCode);
    SetVideoSliderPlayers(preset);
    UpdateVideoSliders(preset);
    SetVolSliders(preset);
    UpdateGCs(preset, state);
    Marks->ShowRemaining(preset, timeCode ? std::optional(timeCode->Time) : std::nullopt);
    UpdatePresetLabels(preset);
    Simulator->SetPreset(std::make_unique<Zorvic::Preset>(preset).release(),
                         std::make_unique<Zorvic::PresetState>(state).release(), true);
}

void ZorvicView::ShowNoPreset() {
    Clock->ShowNothing();
    Mix->ShowNothing();
    Marks->ShowNothing();
    UpdatePresetLabels({});
    Simulator->SetPreset(nullptr, nullptr, false);
}

std::unordered_map<int, Zorvic::PresetState> ZorvicView::GetPresetStates(Zorvic::Session* session) const {
    auto round = BeginRound(session);
    std::unordered_map<int, Zorvic::PresetState> byPK;
    if (const auto* const states = round.States()) {
        for (const auto& state : *states)
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
    for (auto* label : {CDPresetLabel, GotosPresetLabel, VideoPresetLabel})
        label->setText(text);
}

QTreeWidgetItem* ZorvicView::GetSelectedPresetItem() const {
    const auto rows = PresetsView->selectedItems();
    return rows.isEmpty() ? nullptr : rows.first();
}

QList<QTreeWidgetItem*> ZorvicView::GetSelectedPresetItems() const {
    return PresetsView->selectedItems();
}

int ZorvicView::CurrentPK() const {
    const auto keys = Rows->SelectedKeys();
    return keys.empty() ? 0 : keys.front();
}

std::unique_ptr<Zorvic::Preset> ZorvicView::GetSelectedPreset(Zorvic::Session* session) const {
    auto round = session ? BeginRound(session) : BeginRound();
    const auto* const preset = round.Current();
    return preset ? std::make_unique<Zorvic::Preset>(*preset) : nullptr;
}

std::unordered_map<int, Zorvic::Preset> ZorvicView::GetSelectedPresets(Zorvic::Session* session) const {
    auto round = session ? BeginRound(session) : BeginRound();
    std::unordered_map<int, Zorvic::Preset> selected;
    const auto keys = Rows->SelectedKeys();
    if (keys.empty() || !round.Presets()) return selected;
    for (const int key : keys) {
        const auto* const preset = round.FindPreset(key);
        selected.emplace(key, preset ? *preset : Zorvic::Preset());
    }
    return selected;
}

QTreeWidgetItem* ZorvicView::LookupPresetItem(int pk) const {
    return Rows->Find(pk);
}

std::unique_ptr<Zorvic::Preset> ZorvicView::LookupPreset(Zorvic::Session* session, int pk) const {
    auto round = BeginRound(session);
    const auto* const preset = round.FindPreset(pk);
    return preset ? std::make_unique<Zorvic::Preset>(*preset) : nullptr;
}

std::unique_ptr<Zorvic::PresetState> ZorvicView::LookupPresetState(Zorvic::Session* session, int pk) const {
    auto round = BeginRound(session);
    const auto* const state = round.FindState(pk);
    return state ? std::make_unique<Zorvic::PresetState>(*state) : nullptr;
}

void ZorvicView::OnPresetSelected() {
    const int pk = CurrentPK();
    if (pk == 0) return;
    ZORVIC_LOG_DEBUG << "Selection changed to PK " << pk;
    auto round = BeginRound();
    const auto* const state = round.CurrentState();
    if (!state) return;
    if (!state->IsSelected) Report(tr("Select"), round.Session(), round.Session()->SelectPreset(pk));
    ShowTimes(round, pk);
}

void ZorvicView::ToggleCreatePreset() {
    PresetDialog->setVisible(!PresetDialog->isVisible());
    PresetDialog->SetPreset({});
}

void ZorvicView::EditSelectedPreset() {
    if (const int pk = CurrentPK()) Edit({pk});
}

void ZorvicView::Edit(const std::vector<int>& keys) {
    auto round = BeginRound();
    const auto* const preset = keys.empty() ? nullptr : round.FindPreset(keys.front());
    if (!preset) return;
    PresetDialog->SetPreset(*preset);
    PresetDialog->show();
    PresetDialog->raise();
    PresetDialog->activateWindow();
}

void ZorvicView::OnCreatorDone() {
    auto round = BeginRound();
    const int pk = PresetDialog->PresetKey();
    const auto* const current = round.FindPreset(pk);
    if (current) {
        PresetDialog->TakeOver(*current);
    } else if (pk != 0 && round.Presets()) {
        PresetDialog->MakeNew();
        PresetDialog->ShowFailure(tr("Not saved: the preset was deleted meanwhile. Save again to create it anew."));
        return;
    }
    const std::unique_ptr<Zorvic::Preset> preset(PresetDialog->CompilePreset());
    if (!preset) return;
    const auto status = Store(round, *preset);
    if (status == Zorvic::ZORVIC_STATUS_OK) {
        PresetDialog->SetPreset({});
        return;
    }
    if (round.Session()) std::cerr << "Failed to create preset with Name " << preset->Name << std::endl;
    PresetDialog->ShowFailure(NotSavedText(status, *preset));
}

void ZorvicView::CloneSelectedPresets() {
    Clone(Rows->SelectedKeys());
}

void ZorvicView::Clone(const std::vector<int>& keys) {
    auto round = BeginRound();
    auto sorted = keys;
    std::sort(sorted.begin(), sorted.end());
    for (const int key : sorted) {
        const auto* const original = round.FindPreset(key);
        if (!original) continue;
        auto preset = *original;
        preset.PK = 0;
        preset.Name += " - copy";
        Report(DupPresetsButton->accessibleName(), round.Session(), round.Session()->CreatePreset(preset));
    }
}

void ZorvicView::DeleteSelectedPresets() {
    Delete(Rows->SelectedKeys());
}

void ZorvicView::Delete(const std::vector<int>& keys) {
    const auto handle = keys.empty() ? nullptr : LookupSession();
    if (!handle) return;
    for (const int key : keys)
        if (Rows->Find(key))
            Report(DeletePresetsButton->accessibleName(), handle->GetSession(),
                   handle->GetSession()->DeletePreset(key));
}

// Another console may select another preset while the menu is open. So the operator's choice is noted before it opens.
void ZorvicView::OnPresetRightClick(const QPoint& point) {
    const auto keys = Rows->SelectedKeys();
    const auto menu = std::make_unique<QMenu>();
    const auto add = [&](const QString& text, void (ZorvicView::*act)(const std::vector<int>&)) {
        auto* action = menu->addAction(text);
        connect(action, &QAction::triggered, this, [this, keys, act] { (this->*act)(keys); });
        return action;
    };
    add(tr("Edit"), &ZorvicView::Edit)->setEnabled(keys.size() <= 1);
    add(tr("Clone"), &ZorvicView::Clone);
    add(tr("Delete"), &ZorvicView::Delete);
    MenuLetters::GiveTo(*menu);
    menu->exec(PresetsView->viewport()->mapToGlobal(point));  // runs the event loop: this view may be gone
}

void ZorvicView::RebuildTabOrderings() {
    const auto keys = Rows->Keys();
    auto round = BeginRound();
    if (keys.empty() || !round.Presets()) return;
    int place = -1;
    for (const int key : keys) {
        ++place;
        const auto* const found = round.FindPreset(key);
        if (!found) {
            std::cerr << "No preset " << key << " in Items\n";
            continue;
        }
        auto preset = *found;
        preset.TabDisplayOrder[0].Index = place;
        Report(tr("Order the presets"), round.Session(), round.Session()->UpdatePreset(preset));
    }
}
