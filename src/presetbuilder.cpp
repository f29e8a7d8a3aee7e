#include "presetbuilder.h"

#include "assetbrowser.h"
#include "log.h"
#include "metadata_cache.h"
#include "playerpanelwidget.h"
#include "sessionmanager.h"
#include "simulator.h"
#include "widgets/placement.h"
#include "widgets/popupkeys.h"
#include "widgets/wheelguard.h"

#include <zorvic/session.h>
#include <zorvic/tables.h>

#include <QCloseEvent>
#include <QHideEvent>
#include <QIcon>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QShowEvent>
#include <QStyle>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>
#include <utility>

namespace {

constexpr std::size_t DefaultVolumeChannels = 16;
constexpr int MaxLinkDigits = 255;

QString LinkText(const Zorvic::Preset& preset) {
    return QString::number(preset.PK) + QStringLiteral(" - ") + QString::fromStdString(preset.Name);
}

/// The number that a link's text starts with; 0 when it starts with none.
int LeadingNumber(const QString& text) {
    const QString start = text.left(MaxLinkDigits);
    const auto* const end = std::find_if_not(start.begin(), start.end(),
                                             [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
    return start.left(static_cast<int>(end - start.begin())).toInt();
}

/// An empty canvas for each output that no canvas covers.
void AddFreeOutputs(Zorvic::Preset& preset, const Zorvic::KonaHardwareState& hardware) {
    std::size_t outputs = 0;
    for (const Zorvic::CanvasInfo& canvas : preset.Canvases)
        outputs += canvas.CanvasCfg.NumOutputs;
    for (; outputs < hardware.Resolutions.size(); ++outputs) {
        const auto size = ResolutionSizeMap.find(hardware.Resolutions.at(outputs));
        Zorvic::CanvasInfo canvas;
        canvas.CanvasCfg.Orientation = Zorvic::CanvasOrientation(Zorvic::CanvasOrientationEnum::Single, nullptr);
        canvas.CanvasCfg.NumOutputs = 1;
        canvas.CanvasCfg.Dimensions = size != ResolutionSizeMap.end() ? size->second : Zorvic::Size2D{1920, 1080};
        canvas.SinkTypes = Zorvic::ZORVIC_SINK_KONA;
        canvas.Index = static_cast<std::uint32_t>(preset.Canvases.size());
        preset.Canvases.push_back(std::move(canvas));
    }
}

void DropEmptyCanvases(Zorvic::Preset& preset) {
    std::erase_if(preset.Canvases, [](const Zorvic::CanvasInfo& canvas) { return canvas.Assets.empty(); });
    for (std::size_t i = 0; i < preset.Canvases.size(); ++i)
        preset.Canvases[i].Index = static_cast<std::uint32_t>(i);
}

/// What the operator adjusted elsewhere in the picture of an asset that is still where it was.
void TakeOverPictures(const std::vector<Zorvic::CanvasInfo>& current, std::vector<Zorvic::CanvasInfo>& canvases) {
    for (Zorvic::CanvasInfo& canvas : canvases) {
        const auto stored = std::ranges::find(current, canvas.Index, &Zorvic::CanvasInfo::Index);
        if (stored == current.end()) continue;
        for (Zorvic::PinnedAsset& asset : canvas.Assets) {
            const auto same = std::ranges::find(stored->Assets, asset.FullPath, &Zorvic::PinnedAsset::FullPath);
            if (same == stored->Assets.end()) continue;
            for (const auto member : {&Zorvic::PinnedAsset::Hue, &Zorvic::PinnedAsset::Saturation,
                                      &Zorvic::PinnedAsset::Brightness, &Zorvic::PinnedAsset::Contrast})
                asset.*member = *same.*member;
        }
    }
}

std::optional<int> BeyondBox(const QSpinBox& box, int value) {
    return value < box.minimum() || value > box.maximum() ? std::optional(value) : std::nullopt;
}

}  // namespace

PresetBuilder::PresetBuilder(const std::string& guid, MetadataCache& cache)
    : GUID(guid),
      CurPreset(std::make_unique<Zorvic::Preset>()),
      BrowserDialog(std::make_unique<AssetBrowser>(guid, true)),
      SimWidget(new Simulator::SimulatorWidget(this, cache, false)),
      MDCache(cache) {
    setupUi(this);
    setWindowIcon(QIcon(QStringLiteral(":icons/icon.png")));
    SetUpShortcuts();
    WireButtons();
    WirePlaybackFields();
    WireFailure();
    SimulatorGrid->addWidget(SimWidget, 0, 0);
    connect(SimWidget, &Simulator::SimulatorWidget::SizingChanged, this, &PresetBuilder::OnSizingChanged);
    PlaceOverMainWindow(*this);
    GuardWheel(*this);
    // An open builder must not keep the program running when the main window is closed.
    setAttribute(Qt::WA_QuitOnClose, false);
    UpdateCachedPresets({});
    RedrawFromPreset();
    Update();
}

PresetBuilder::~PresetBuilder() = default;

void PresetBuilder::SetUpShortcuts() {
    // Without repetition: a key still held down from the asset browser must not save or close what lies below it.
    auto* const save = new QShortcut(Qt::Key_Return, this);
    save->setAutoRepeat(false);
    connect(save, &QShortcut::activated, this, &PresetBuilder::Save);
    auto* const close = new QShortcut(Qt::Key_Escape, this);
    close->setAutoRepeat(false);
    connect(close, &QShortcut::activated, this, &PresetBuilder::Close);
    KeepKeysInPopup(*LinkSelect);
    KeepKeysInPopup(*TabBox);
}

void PresetBuilder::WireButtons() {
    connect(CloseButton, &QPushButton::clicked, this, &PresetBuilder::Close);
    connect(CreateButton, &QPushButton::clicked, this, &PresetBuilder::Save);
    connect(PresetNameBox, &QLineEdit::textChanged, CreateButton,
            [this](const QString& name) { CreateButton->setEnabled(!name.isEmpty()); });
}

void PresetBuilder::WirePlaybackFields() {
    connect(FadeCheck, &QCheckBox::stateChanged, this, &PresetBuilder::OnFadeChanged);
    connect(FreezeCheck, &QCheckBox::stateChanged, this, &PresetBuilder::OnFreezeChanged);
    connect(LoopForeverCheck, &QCheckBox::stateChanged, this, &PresetBuilder::OnLoopForeverChanged);
    const auto valueChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    connect(LoopSpin, valueChanged, this, [this] {
        HeldLoop.reset();
        ShowHeld();
    });
    connect(FadeSpin, valueChanged, this, [this] {
        HeldFade.reset();
        ShowHeld();
    });
}

// What was wrong may be mended by any edit.
void PresetBuilder::WireFailure() {
    const auto clear = [this] { FailureLabel->clear(); };
    for (const QLineEdit* const field : {PresetNameBox, NotesBox})
        connect(field, &QLineEdit::textChanged, FailureLabel, clear);
    for (const QCheckBox* const check : {LoopForeverCheck, FadeCheck, FreezeCheck})
        connect(check, &QCheckBox::stateChanged, FailureLabel, clear);
    for (const QSpinBox* const box : {LoopSpin, FadeSpin})
        connect(box, QOverload<int>::of(&QSpinBox::valueChanged), FailureLabel, clear);
    connect(LinkSelect, QOverload<int>::of(&QComboBox::activated), FailureLabel, clear);
}

void PresetBuilder::OnFadeChanged() {
    HeldFade.reset();
    ShowHeld();
    FadeSpin->setEnabled(FadeCheck->isChecked());
    if (!FadeCheck->isChecked()) FadeSpin->setValue(0);
}

void PresetBuilder::OnFreezeChanged() {
    const bool freeze = FreezeCheck->isChecked();
    LoopForeverCheck->setEnabled(!freeze);
    if (freeze) {
        LoopForeverCheck->setChecked(false);
        SetNoLoop();
    }
    LoopSpin->setEnabled(!LoopForeverCheck->isChecked() && !freeze);
}

void PresetBuilder::OnLoopForeverChanged() {
    LoopSpin->setEnabled(!LoopForeverCheck->isChecked());
    if (LoopForeverCheck->isChecked()) SetNoLoop();
}

void PresetBuilder::SetNoLoop() {
    LoopSpin->setValue(0);
    HeldLoop.reset();
    ShowHeld();
}

void PresetBuilder::Save() {
    FailureLabel->clear();
    emit CreateClicked();
    if (FailureLabel->text().isEmpty()) hide();
}

void PresetBuilder::ShowFailure(const QString& why) {
    FailureLabel->setText(why);
}

void PresetBuilder::Close() {
    hide();
    emit CloseClicked();
}

void PresetBuilder::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) PresetNameBox->setFocus();
    QWidget::showEvent(event);
}

void PresetBuilder::hideEvent(QHideEvent* event) {
    // A minimised window stays in use; one that is put away leaves no browser behind that chooses for nobody.
    if (!event->spontaneous()) EndChoosing();
    QWidget::hideEvent(event);
}

void PresetBuilder::closeEvent(QCloseEvent* event) {
    if (isVisible()) Close();
    QWidget::closeEvent(event);
}

void PresetBuilder::UpdateCachedPresets(std::vector<Zorvic::Preset>&& presets) {
    QStringList texts{tr("None")};
    for (const Zorvic::Preset& preset : presets)
        texts.append(LinkText(preset));
    CachedPresets = std::move(presets);

    QStringList shown;
    for (int i = 0; i < LinkSelect->count(); ++i)
        shown.append(LinkSelect->itemText(i));
    // The unit reports its presets many times a second: a list without a change stays open under the operator's hand.
    if (shown == texts) return;
    const int chosen = LeadingNumber(LinkSelect->currentText());
    LinkSelect->hidePopup();
    LinkSelect->clear();
    LinkSelect->addItems(texts);
    ChooseLink(chosen);
}

void PresetBuilder::ChooseLink(int pk) {
    const auto preset = std::find_if(CachedPresets.begin(), CachedPresets.end(),
                                     [pk](const Zorvic::Preset& candidate) { return candidate.PK == pk; });
    if (pk > 0 && preset != CachedPresets.end()) LinkSelect->setCurrentText(LinkText(*preset));
}

void PresetBuilder::SetPreset(const Zorvic::Preset& preset) {
    Zorvic::KonaHardwareState hardware;
    {
        const auto handle = FindSession(GUID);
        if (!handle) return;
        if (!handle->GetSession()) {
            ZORVIC_LOG_ERROR << "Unable to obtain session!";
            return;
        }
        if (handle->GetSession()->GetKonaHardwareState(hardware) != Zorvic::ZORVIC_STATUS_OK) {
            ZORVIC_LOG_ERROR << "Failed to obtain Kona hardware state!";
            hardware = {};
        }
    }
    EndChoosing();
    auto loaded = std::make_unique<Zorvic::Preset>(preset);
    AddFreeOutputs(*loaded, hardware);
    // The panes point into the old preset until the simulator has the new one.
    const auto old = std::exchange(CurPreset, std::move(loaded));
    // No preset takes over the link of the one edited before, nor loses its endless loop to that one's freezing.
    LinkSelect->setCurrentIndex(0);
    FreezeCheck->setChecked(false);
    FailureLabel->clear();
    RedrawFromPreset();
    SimWidget->SetPreset(CurPreset.get(), nullptr, false);
    ShowMoves();
    OrderFocus();
}

void PresetBuilder::Update() {
    const std::unique_ptr<Zorvic::Preset> compiled(CompilePreset());
    SetPreset(*compiled);
}

void PresetBuilder::RedrawFromPreset() {
    const Zorvic::Preset& preset = *CurPreset;
    RedrawPlayerPanels();
    PresetNameBox->setText(QString::fromStdString(preset.Name));
    NotesBox->setText(QString::fromStdString(preset.Notes));
    ChooseLink(preset.Link);
    const bool freeze = FreezeCheck->isChecked();
    LoopForeverCheck->setChecked(preset.Loop == -1 && !freeze);
    LoopForeverCheck->setEnabled(!freeze);
    LoopSpin->setValue(preset.Loop);
    LoopSpin->setEnabled(!LoopForeverCheck->isChecked() && !freeze);
    FadeCheck->setChecked(preset.FadeOutMS != 0);
    FadeSpin->setEnabled(FadeCheck->isChecked());
    FadeSpin->setValue(preset.FadeOutMS);
    HoldWhatBoxesCannot();
    FreezeCheck->setChecked(preset.FreezeAtEnd);
    CreateButton->setEnabled(!PresetNameBox->text().isEmpty());
}

void PresetBuilder::HoldWhatBoxesCannot() {
    HeldLoop = CurPreset->Loop == -1 ? std::nullopt : BeyondBox(*LoopSpin, CurPreset->Loop);
    HeldFade = BeyondBox(*FadeSpin, CurPreset->FadeOutMS);
    ShowHeld();
}

void PresetBuilder::ShowHeld() {
    QStringList held;
    if (HeldLoop) held += tr("Loop stays %1.").arg(*HeldLoop);
    if (HeldFade) held += tr("Fade stays %1 ms.").arg(*HeldFade);
    HeldLabel->setText(held.join(QLatin1Char(' ')));
}

void PresetBuilder::RedrawKeepingForm() {
    StoreForm(*CurPreset);
    // The link stays a choice of the form: "None" means the link that the preset was loaded with.
    const int link = LinkSelect->currentIndex();
    RedrawFromPreset();
    LinkSelect->setCurrentIndex(link);
    ShowMoves();
}

void PresetBuilder::OnSizingChanged() {
    FailureLabel->clear();
    RedrawPlayerPanels();
    ShowMoves();
}

// Unused outputs close up on saving. Who expects an asset on Output 3 must not find out in the show.
void PresetBuilder::ShowMoves() {
    Zorvic::Preset saved = *CurPreset;
    DropEmptyCanvases(saved);
    std::uint32_t place = 0;
    for (auto* const pane : SimWidget->findChildren<Simulator::SimulatorPaneWidget*>()) {
        const auto& cfg = pane->GetCfg();
        QString remark;
        if (cfg.HasAsset()) {
            const auto players = saved.GetPlayersForCanvas(place++);
            if (players != cfg.Players) remark = tr("Saving moves this to %1").arg(Simulator::OutputsText(players));
        }
        pane->SetRemark(remark);
        pane->layout()->activate();  // so that the size below counts what was just said
    }
    FitToScreen();
}

void PresetBuilder::RedrawPlayerPanels() {
    Panels.clear();
    for (std::size_t i = 0; i < CurPreset->Canvases.size(); ++i)
        AddPlayerPanels(static_cast<std::uint32_t>(i), CurPreset->Canvases[i]);
}

void PresetBuilder::AddPlayerPanels(std::uint32_t canvasIndex, Zorvic::CanvasInfo& canvas) {
    const std::unique_ptr<std::array<std::uint32_t, 2>> range(CurPreset->GetPlayerRangeForCanvas(canvasIndex));
    if (!range) return;
    const auto [first, last] = *range;
    for (std::uint32_t output = first; output <= last; ++output) {
        auto panel = std::make_unique<PlayerPanelWidget>(static_cast<Zorvic::Player>(1U << (output - 1)), &MDCache,
                                                         output == first ? &canvas : nullptr);
        const int position = std::min(static_cast<int>(output), PlayerPanelsLayout->count());
        PlayerPanelsLayout->insertWidget(position, panel.get(), output == last ? 1 : 0, Qt::AlignLeft);
        panel->show();  // at once: the layout would do it after the next frame
        Panels.push_back(std::move(panel));
    }
}

void PresetBuilder::FitToScreen() {
    const QSize panes = SimWidget->sizeHint();
    const int scrollBar = SimulatorScroll->horizontalScrollBar()->sizeHint().height();
    SimulatorScroll->setMinimumHeight(panes.height() + scrollBar);
    const QSize screenSize = screen()->availableGeometry().size();
    const QSize frame = frameGeometry().size() - size();
    FitPanels(screenSize - frame.expandedTo({0, style()->pixelMetric(QStyle::PM_TitleBarHeight)}));
    // As wide as the panes where the screen allows it; never smaller than the operator made the window.
    const int beside = layout()->contentsMargins().left() + layout()->contentsMargins().right();
    const int most = screenSize.width() - frame.width();
    if (!isMaximized()) resize(std::max(width(), std::min(panes.width() + beside, most)), height());
}

// The panels are seen whole, unless the screen is too small for that: the buttons below them must not leave it.
void PresetBuilder::FitPanels(const QSize& room) {
    const QMargins margins = layout()->contentsMargins();
    const QSize least = PanelsScroll->minimumSizeHint();
    PanelsScroll->setMinimumSize(least);
    const int others = minimumSizeHint().height() - least.height();
    const QSize free(room.width() - margins.left() - margins.right(), room.height() - others);
    PanelsScroll->setMinimumSize(PanelsContents->sizeHint().boundedTo(free).expandedTo(least));
}

// New panes come last in the window's chain. What stands below them goes behind them.
void PresetBuilder::OrderFocus() {
    QWidget* last = previousInFocusChain();
    for (QWidget* const field : std::initializer_list<QWidget*>{LoopForeverCheck, LoopSpin, FadeCheck, FadeSpin,
                                                                FreezeCheck, CreateButton, CloseButton}) {
        setTabOrder(last, field);
        last = field;
    }
}

void PresetBuilder::StoreForm(Zorvic::Preset& preset) const {
    preset.Name = PresetNameBox->text().toStdString();
    preset.Notes = NotesBox->text().toStdString();
    preset.Loop = LoopForeverCheck->isChecked() ? -1 : HeldLoop.value_or(LoopSpin->value());
    preset.FadeOutMS = FadeCheck->isChecked() ? HeldFade.value_or(FadeSpin->value()) : 0;
    preset.FreezeAtEnd = FreezeCheck->isChecked();
    if (preset.FreezeAtEnd) preset.Loop = 0;
}

void PresetBuilder::TakeOver(const Zorvic::Preset& current) {
    Zorvic::Preset merged = current;
    StoreForm(merged);
    // Moved, not copied: the panes point to its canvases.
    merged.Canvases = std::move(CurPreset->Canvases);
    TakeOverPictures(current.Canvases, merged.Canvases);
    *CurPreset = std::move(merged);
}

Zorvic::Preset* PresetBuilder::CompilePreset() {
    auto preset = std::make_unique<Zorvic::Preset>(*CurPreset);
    StoreForm(*preset);
    if (LinkSelect->currentIndex() != 0) preset->Link = LeadingNumber(LinkSelect->currentText());
    DropEmptyCanvases(*preset);
    if (preset->TabDisplayOrder.empty()) preset->TabDisplayOrder.emplace(0, Zorvic::TabOrdering(0, 0));
    if (preset->Volume.empty()) preset->Volume.assign(DefaultVolumeChannels, std::numeric_limits<std::uint16_t>::max());
    return preset.release();
}
