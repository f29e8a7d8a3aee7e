#include "zorvicview.h"

#include "assetbrowser.h"
#include "playheadwidget.h"
#include "presetbuilder.h"
#include "simulator.h"
#include "text/beyondinterface.h"
#include "view/assetrows.h"
#include "view/lostlink.h"
#include "view/marktables.h"
#include "view/mixdesk.h"
#ifdef ZORVIC_PREVIEW
#include "view/outputmonitors.h"
#endif
#include "view/presetrows.h"
#include "view/refusals.h"
#include "view/timecodes.h"
#include "widgets/presettreedelegate.h"
#include "widgets/wheelguard.h"

#include <zorvic/tables.h>

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <initializer_list>
#include <unordered_set>
#include <utility>

const std::unordered_map<ZorvicView::PresetColumn, std::string> ZorvicView::PresetFieldNames = {
    {PresetColumn::STATUS, QT_TRANSLATE_NOOP("ZorvicView", "Status")},
    {PresetColumn::PK, QT_TRANSLATE_NOOP("ZorvicView", "Preset #")},
    {PresetColumn::NAME, QT_TRANSLATE_NOOP("ZorvicView", "Name")},
    {PresetColumn::NOTES, QT_TRANSLATE_NOOP("ZorvicView", "Notes")},
    {PresetColumn::TIME, QT_TRANSLATE_NOOP("ZorvicView", "Time")},
    {PresetColumn::TRT, QT_TRANSLATE_NOOP("ZorvicView", "TRT")},
    {PresetColumn::LOOP, QT_TRANSLATE_NOOP("ZorvicView", "Loop")},
    {PresetColumn::LINK, QT_TRANSLATE_NOOP("ZorvicView", "Link")},
};

const std::unordered_map<ZorvicView::AssetColumn, std::string> ZorvicView::AssetFieldNames = {
    {AssetColumn::NAME, QT_TRANSLATE_NOOP("ZorvicView", "Name")},
    {AssetColumn::FOLDER, QT_TRANSLATE_NOOP("ZorvicView", "Folder")},
    {AssetColumn::STATUS, QT_TRANSLATE_NOOP("ZorvicView", "Status")},
    {AssetColumn::TRT, QT_TRANSLATE_NOOP("ZorvicView", "Length")},
    {AssetColumn::SIZE, QT_TRANSLATE_NOOP("ZorvicView", "File size")},
    {AssetColumn::DIMENSIONS, QT_TRANSLATE_NOOP("ZorvicView", "Dimensions")},
    {AssetColumn::CODEC, QT_TRANSLATE_NOOP("ZorvicView", "Codec")},
    {AssetColumn::ABITRATE, QT_TRANSLATE_NOOP("ZorvicView", "Audio\nBitrate")},
    {AssetColumn::ACHANNELS, QT_TRANSLATE_NOOP("ZorvicView", "Audio\nChannels")},
};

const std::unordered_map<ZorvicView::GotosColumn, std::string> ZorvicView::GotosFieldNames = {
    {GotosColumn::INDEX, QT_TRANSLATE_NOOP("ZorvicView", "ID")},
    {GotosColumn::GOBUTTON, ""},
    {GotosColumn::NAME, QT_TRANSLATE_NOOP("ZorvicView", "Name")},
    {GotosColumn::POSITION, QT_TRANSLATE_NOOP("ZorvicView", "Position")},
};

const std::unordered_map<ZorvicView::CountdownsColumn, std::string> ZorvicView::CountdownsFieldNames = {
    {CountdownsColumn::INDEX, QT_TRANSLATE_NOOP("ZorvicView", "ID")},
    {CountdownsColumn::NAME, QT_TRANSLATE_NOOP("ZorvicView", "Name")},
    {CountdownsColumn::POSITION, QT_TRANSLATE_NOOP("ZorvicView", "Position")},
    {CountdownsColumn::REMAINING, QT_TRANSLATE_NOOP("ZorvicView", "Remaining")},
};

namespace {

/// Header texts and widths of one table. Only the visible rows are measured: measuring all of them takes most of the
/// time of a rebuild.
template <typename Column>
void SetUpTable(QTreeWidget* tree, const std::unordered_map<Column, std::string>& names,
                const std::unordered_set<Column>& stretched = {}) {
    QStringList texts;
    for (int column = 1; column < static_cast<int>(Column::MAX); ++column) {
        const auto& name = names.at(static_cast<Column>(column));
        texts << (name.empty() ? QString() : QCoreApplication::translate("ZorvicView", name.c_str()));
    }
    tree->setColumnCount(static_cast<int>(texts.size()));
    tree->setHeaderLabels(texts);
    tree->header()->setResizeContentsPrecision(0);
    tree->header()->setStretchLastSection(false);
    for (int index = 0; index < texts.size(); ++index) {
        const bool stretch = stretched.count(static_cast<Column>(index + 1)) != 0;
        tree->header()->setSectionResizeMode(index, stretch ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
    }
}

constexpr std::uint32_t Bits(ZorvicView::ViewUpdateFlags flags) {
    return static_cast<std::uint32_t>(flags);
}

constexpr std::uint32_t BitOf(Zorvic::StateEventType type) {
    return std::uint32_t{1} << ((static_cast<std::uint32_t>(type) - 1) % 32);
}

/// The red of a lost link is readable on a light ground only, which is as wide as the text.
void ShowOnLightGround(QLabel& label, bool light) {
    QPalette palette;
    if (light) palette.setColor(QPalette::Window, QColor::fromRgb(0xffe6ebf0));
    label.setPalette(palette);
    label.setAutoFillBackground(light);
    label.setSizePolicy(light ? QSizePolicy::Maximum : QSizePolicy::Ignored, QSizePolicy::Preferred);
}

/// What is large in order to be read across a room gives way where a screen has no place for it.
void FitSmallScreen(const Ui::ZorvicViewUI& ui) {
    constexpr int LargeFrom = 1120;
    if (QGuiApplication::primaryScreen()->availableSize().width() >= LargeFrom) return;
    const auto setSize = [](QWidget& widget, int points, const QSize& least) {
        QFont font = widget.font();
        font.setPointSize(points);
        widget.setFont(font);
        widget.setMinimumSize(least);
    };
    setSize(*ui.SeekBox, 24, {190, 44});
    ui.SeekBox->setMaximumWidth(190);
    setSize(*ui.StateLabel, 11, {0, 0});
    for (auto* const button : {ui.TakeButton, ui.PauseButton, ui.EndButton}) {
        setSize(*button, 11, {0, 44});
        button->setIconSize({20, 20});
    }
    ui.PresetsView->setMinimumHeight(72);
    ui.ViewLayout->setContentsMargins(4, 2, 4, 2);
    for (auto* const layout : std::initializer_list<QLayout*>{ui.ViewLayout, ui.VideoTab->layout()})
        layout->setSpacing(2);
}

QString VideoModeText(const Zorvic::KonaHardwareState& state) {
    QString resolutions;
    for (const auto resolution : state.Resolutions) {
        resolutions += QString::fromStdString(ResolutionMap.at(resolution)) % QLatin1Char(' ');
    }
    return ZorvicView::tr("Video Mode: <b><font color=\"#00cd00\"> %1 @ %2fps</font></b>")
        .arg(resolutions, QString::fromStdString(RefreshMap.at(state.RefreshRate)));
}

}  // namespace

ZorvicView::ZorvicView(const std::string& guid, const std::string& ip)
    : MDCache(guid),
      GUID(guid),
      IP(ip),
      BrowserDialog(std::make_unique<AssetBrowser>(guid, false)),
      PresetDialog(std::make_unique<PresetBuilder>(guid, MDCache)),
      Simulator(new ::Simulator::SimulatorWidget(this, MDCache, true)),
      ScrubBar(new PlayHeadWidget(this)) {
    using namespace std::chrono_literals;
    setupUi(this);
    SetUpPresetList();
    SetUpPanes();
    OrderFocus();
    FitSmallScreen(*this);
    SetUpColumns();
    SetUpRooms();
    WirePresetList();
    WireTransport();
    WireMarks();
    WireAssets();
    WireShortcuts();
    WireLayoutPane();
    SetUpMonitors();
    WireDialogs();
    GuardWheel(*this);
    UpdatePresetLabels({});
    UpdateAssetsLabel({});
    StartTimer(100ms, &ZorvicView::ProcessViewUpdateFlags);
    StartTimer(250ms, &ZorvicView::UpdateStatus);
    StartTimer(10s, &ZorvicView::CheckConnection);
    InitialAssetScan();
}

// Children die after this object's own members. Dying they report focus, edits and removed children, and hiding they
// measure rows with the delegate.
ZorvicView::~ZorvicView() {
    PresetsView->removeEventFilter(this);
    PresetsView->viewport()->removeEventFilter(this);
    for (auto* child : findChildren<QObject*>())
        child->disconnect(this);
    Marks.reset();
    hide();
}

void ZorvicView::SetUpPanes() {
    PanelSplit->setStretchFactor(1, 1);
    Simulator->SetPreset(nullptr, nullptr, false);
    delete SimulatorLayout->replaceWidget(SimulatorPlaceholder, Simulator);
    delete SimulatorPlaceholder;
    const auto paneHeight = ::Simulator::SimulatorPaneConfig::CalcROBaseSize() + 16;
    // It scrolls: the preset list above must not move when another preset with other canvases is selected.
    SimulatorLayoutWidget->setMinimumHeight(static_cast<int>(paneHeight) * 2);
    LayoutSplit->setStretchFactor(0, 3);
    LayoutSplit->setStretchFactor(1, 1);
    SimulatorCheckBox->setChecked(true);
    delete TransportGrid->replaceWidget(ScrubBar_, ScrubBar);
    delete ScrubBar_;
    ScrubBar->SetBaseTimes(100, 100);
    ScrubBar->SetTrim(100, 0);
    // Nothing feeds this clock, and one that stands still would mislead.
    label_2->hide();
}

void ZorvicView::SetUpColumns() {
    static const std::unordered_set<PresetColumn> ExcludedPVFields = {PresetColumn::NOTES};
    SetUpTable(PresetsView, PresetFieldNames, ExcludedPVFields);
    SetUpTable(AssetsView, AssetFieldNames);
    SetUpTable(GotosView, GotosFieldNames);
    SetUpTable(CountdownsView, CountdownsFieldNames);
    const int name = AssetColumnTypeToIndex(AssetColumn::NAME);
    AssetsView->header()->setSectionResizeMode(name, QHeaderView::Interactive);
    AssetsView->header()->resizeSection(name, AssetNameColumnWidth);
}

void ZorvicView::SetUpRooms() {
    Rows = std::make_unique<PresetRows>(PresetsView);
    AssetList = std::make_unique<AssetRows>(AssetsView, AssetsLabel, [this](const Zorvic::Asset& asset) {
        return AssetRows::Metadata(MDCache.LookupAsset(asset));
    });
    Clock = std::make_unique<Timecodes>(
        Timecodes::Widgets{StatusIconLabel, StateLabel, SeekBox, Times, TRTLabel, ScrubBar, LChannelVol, RChannelVol});
    Marks = std::make_unique<MarkTables>(GotosView, CountdownsView);
    Mix = std::make_unique<MixDesk>(
        MixDesk::Widgets{LChannel, RChannel, BindAudioChannels, ActivePlayerSel, BrightnessSel, ContrastSel,
                         SaturationSel, HueSel},
        MixDesk::Callbacks{
            [this] { return CurrentPK(); }, [this](int v, QSlider* slider) { OnVolSliderMoved(v, slider); },
            [this](float v, auto member) { OnVideoSliderChanged(v, member); }, [this] { RefreshMix(); }});
    Refused = std::make_unique<Refusals>(RefusalLabel);
    Link = std::make_unique<LostLink>(LinkLabel, std::vector<QWidget*>{TransportFrame, PanelSplit, AudioFrame});
}

void ZorvicView::StartTimer(std::chrono::milliseconds period, void (ZorvicView::*slot)()) {
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, slot);
    timer->start(period);
}

void ZorvicView::WireLayoutPane() {
    connect(SimulatorCheckBox, &QCheckBox::stateChanged, this,
            [this](int state) { SimulatorLayoutWidget->setVisible(state != 0); });
    connect(SimulatorCheckBox, &QCheckBox::stateChanged, LayoutStrip,
            [this](int state) { LayoutStrip->setVisible(state != 0); });
    connect(Simulator, &::Simulator::SimulatorWidget::SizingChanged, this, &ZorvicView::OnSizingChanged);
}

void ZorvicView::SetUpMonitors() {
#ifdef ZORVIC_PREVIEW
    auto* monitors = new OutputMonitors(IP, LayoutStrip);
    LayoutRow->addWidget(monitors);
    connect(this, &ZorvicView::LinkChanged, monitors, &OutputMonitors::ShowLink);
#endif
}

void ZorvicView::WireDialogs() {
    connect(BrowserDialog.get(), &AssetBrowser::ItemsChosen, BrowserDialog.get(), &AssetBrowser::PerformImport);
    connect(PresetDialog.get(), &PresetBuilder::CreateClicked, this, &ZorvicView::OnCreatorDone);
    connect(PresetDialog.get(), &PresetBuilder::CloseClicked, this, [this] { PresetDialog->SetPreset({}); });
}

std::unique_ptr<SessionHandle> ZorvicView::LookupSession() const {
    return FindSession(GUID);
}

SessionHandle ZorvicView::GetSessionHandle() const {
    auto handle = LookupSession();
    return handle ? SessionHandle(std::move(*handle)) : SessionHandle(nullptr, {});
}

Round ZorvicView::BeginRound() const {
    return {GUID, SpareLists, Rows->SelectedKeys()};
}

Round ZorvicView::BeginRound(Zorvic::Session* session) const {
    return {session, SpareLists, Rows->SelectedKeys()};
}

void ZorvicView::Report(const QString& what, const Zorvic::Session* session, Zorvic::StatusCode status) const {
    Refused->Report(what, session, status);
}

void ZorvicView::EditCurrent(const QString& what, const EditPreset& edit) const {
    auto round = BeginRound();
    const auto status = round.EditCurrent(edit);
    Report(what, round.Session(), status);
}

void ZorvicView::OnStateEvent(Zorvic::StateEventType type, void* view) {
    static_cast<ZorvicView*>(view)->SetViewUpdateFlag(type);
}

void ZorvicView::SetViewUpdateFlag(Zorvic::StateEventType type) {
    if (type == Zorvic::ZORVIC_STATE_INVALID) return;
    const std::scoped_lock lock(FlagMutex);
    UpdateFlags = static_cast<ViewUpdateFlags>(Bits(UpdateFlags) | BitOf(type));
}

void ZorvicView::ClearViewUpdateFlag(Zorvic::StateEventType type) {
    const std::scoped_lock lock(FlagMutex);
    const auto cleared = type == Zorvic::ZORVIC_STATE_INVALID ? ~std::uint32_t{0} : BitOf(type);
    UpdateFlags = static_cast<ViewUpdateFlags>(Bits(UpdateFlags) & ~cleared);
}

ZorvicView::ViewUpdateFlags ZorvicView::PopViewUpdateFlags() {
    const std::scoped_lock lock(FlagMutex);
    return std::exchange(UpdateFlags, ViewUpdateFlags::INVALID);
}

void ZorvicView::ProcessViewUpdateFlags() {
    constexpr auto Both = Bits(ViewUpdateFlags::PRESETS) | Bits(ViewUpdateFlags::PSTATES);
    auto flags = Bits(PopViewUpdateFlags());
    if (flags == 0) return;
    // Presets are shown with their states: once is enough.
    if ((flags & Both) == Both) flags &= ~Bits(ViewUpdateFlags::PSTATES);
    auto round = BeginRound();
    const QPointer<ZorvicView> self(this);
    for (auto bit = Bits(ViewUpdateFlags::MINVALUE); bit <= Bits(ViewUpdateFlags::MAXVALUE); bit *= 2) {
        if ((flags & bit) == 0) continue;
        if (!round.Renew() || !RefreshFor(static_cast<ViewUpdateFlags>(bit), round) || !self) return;
    }
}

bool ZorvicView::RefreshFor(ViewUpdateFlags flag, Round& round) {
    switch (flag) {
        case ViewUpdateFlags::PRESETS:
        case ViewUpdateFlags::PSTATES:
            return RefreshPresets(round) || flag == ViewUpdateFlags::PSTATES;
        case ViewUpdateFlags::ASSETS: {
            std::vector<Zorvic::Asset> assets;
            if (round.Session()->GetAssets(assets) != Zorvic::ZORVIC_STATUS_OK) return false;
            AcceptAssets(assets);
            return true;
        }
        case ViewUpdateFlags::TIMECODE:
            return RefreshTimeCodes(round);
        default:  // the status timer shows the hardware state
            return true;
    }
}

void ZorvicView::UpdateStatus() {
    const auto handle = LookupSession();
    if (!handle) return;
    const bool connected = handle->GetSession()->Connected();
    ShowLink(connected, connected ? QString() : LinkProblemText(*handle->GetSession()));
    QString text;
    Zorvic::KonaHardwareState state;
    if (!connected) {
        text = tr("<b><font color=\"#cd0000\">Disconnected from server</font></b>");
    } else if (handle->GetSession()->GetKonaHardwareState(state) != Zorvic::ZORVIC_STATUS_OK) {
        text = tr("Error fetching unit status. Check connection.");
    } else {
        text = VideoModeText(state);
    }
    if (text != StatusLabel->text()) StatusLabel->setText(text);
}

void ZorvicView::ShowLink(bool connected, const QString& problem) {
    if (!Link->Show(connected, problem)) return;
    ShowOnLightGround(*StatusLabel, !connected);
    if (connected) {
        SetViewUpdateFlag(Zorvic::ZORVIC_STATE_PRESETS);
        SetViewUpdateFlag(Zorvic::ZORVIC_STATE_TIMECODE);
    } else {
        Clock->ShowStale();
        Rows->ShowStale();
        Marks->ShowStale();
    }
    emit LinkChanged(!connected);
}

void ZorvicView::CheckConnection() {
    const auto handle = LookupSession();
    if (handle && !handle->GetSession()->Connected()) {
        handle->GetSession()->Reconnect({});
    }
}

void ZorvicView::OnSizingChanged() {
    const auto handle = LookupSession();
    if (handle && Simulator->GetPreset()) {
        Report(tr("Place the asset"), handle->GetSession(),
               handle->GetSession()->UpdatePreset(*Simulator->GetPreset()));
    }
}

bool ZorvicView::eventFilter(QObject* object, QEvent* event) {
    return Rows->Filter(object, event) || QWidget::eventFilter(object, event);
}
