#include "simulatorpane.h"

#include "log.h"
#include "metadata_cache.h"
#include "widgets/popupkeys.h"
#include "widgets/wheelguard.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>

#include <array>
#include <memory>
#include <utility>

namespace Simulator {

const char* const PLAYERLABELTEXT = QT_TRANSLATE_NOOP("Simulator", "Player ");

QString OutputsText(Zorvic::Player players) {
    const std::unique_ptr<std::array<std::uint32_t, 2>> range(Zorvic::GetPlayerRange(players));
    if (!range) return {};
    const auto [first, last] = *range;
    return first == last ? SimulatorPaneWidget::tr("Output %1").arg(first)
                         : SimulatorPaneWidget::tr("Outputs %1-%2").arg(first).arg(last);
}

SimulatorPaneWidget::SimulatorPaneWidget(const SimulatorPaneConfig& cfg, MetadataCache& cache)
    : CurCfg(cfg), MDCache(cache) {
    setupUi(this);
    // The controls take the presses that their disabled buttons let through: those are not clicks on the pane.
    ControlsWidget->setAttribute(Qt::WA_NoMousePropagation);
    KeepKeysInPopup(*SizingBox);
    // A wheel that only passes over the box must not place an asset on a running unit.
    GuardWheel(*this);
    WireControls();
    if (!cfg.ReadOnly) setFocusPolicy(Qt::TabFocus);
    // Nothing moves under the mouse when a note comes.
    NoteLabel->setText(tr("Sound only"));
    NoteLabel->setMinimumHeight(NoteLabel->sizeHint().height());
    SetConfig(cfg);
}

SimulatorPaneWidget::~SimulatorPaneWidget() = default;

void SimulatorPaneWidget::WireControls() {
    for (QPushButton* const button : {TopArrow, BottomArrow, LeftArrow, RightArrow, ResetButton}) {
        connect(button, &QPushButton::clicked, this, [this, button] { OnArrowClicked(button); });
        // A click must not take the keyboard from the list that the operator works in: the arrow goes disabled at
        // once, and the focus would wander on to the next control.
        button->setFocusPolicy(Qt::TabFocus);
    }
    connect(SizingBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &SimulatorPaneWidget::OnSizingModeChanged);
    connect(ClearButton, &QPushButton::clicked, this, &SimulatorPaneWidget::OnClearClicked);
}

void SimulatorPaneWidget::SetConfig(const SimulatorPaneConfig& cfg) {
    Show(cfg, std::nullopt);
}

void SimulatorPaneWidget::Refresh(const SimulatorPaneConfig& cfg) {
    Show(cfg, SimButtonStates{});
}

void SimulatorPaneWidget::Show(const SimulatorPaneConfig& cfg, const std::optional<SimButtonStates>& otherwise) {
    CurCfg = cfg;
    ShowTexts();
    PaneWidget->setFixedSize(CurCfg.ScaledSize.Width, CurCfg.ScaledSize.Height);
    FitLabels();
    const auto inferred = InferButtonStates();
    if (const auto& states = inferred ? inferred : otherwise) LoadButtonStates(*states);
    ShowNotes();
    ClearButton->setVisible(!CurCfg.ReadOnly);
    if (CurCfg.CurPresetState) ShowPlayState(CurCfg.CurPresetState->IsPlaying);
}

void SimulatorPaneWidget::ShowTexts() {
    const Zorvic::Size2D size = CurCfg.Canvas ? CurCfg.Canvas->CanvasCfg.Dimensions : Zorvic::Size2D{};
    ResLabel->setText(QString::number(size.Width) + QLatin1Char('x') + QString::number(size.Height));

    OutputsLabel->setText(OutputsText(CurCfg.Players));

    if (CurCfg.HasAsset()) {
        const QString path = QString::fromStdString(CurCfg.Canvas->Assets.front().FullPath);
        PaneLabel->setTextFormat(Qt::PlainText);
        PaneLabel->setText(path);
        setToolTip(path);
    } else {
        PaneLabel->setTextFormat(Qt::RichText);
        PaneLabel->setText(QStringLiteral("<b><font color=\"red\">%1</font></b>").arg(tr("No asset")));
        setToolTip(tr("No asset"));
    }
}

void SimulatorPaneWidget::FitLabels() {
    SimLabelsWidget->setFixedWidth(CurCfg.ScaledSize.Width);
    // Over a narrow canvas the two texts stand below each other instead of cutting each other off.
    const QMargins margins = LabelsLayout->contentsMargins();
    const int gap = fontMetrics().averageCharWidth();
    const int beside = OutputsLabel->sizeHint().width() + gap + ResLabel->sizeHint().width();
    const bool fits = beside + margins.left() + margins.right() <= CurCfg.ScaledSize.Width;
    LabelsLayout->setDirection(fits ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    ResLabel->setAlignment(fits ? Qt::AlignRight : Qt::AlignLeft);
    setAccessibleName(OutputsLabel->text() + QStringLiteral(": ") + toolTip());
    SimLabelsWidget->setToolTip(OutputsLabel->text() + QLatin1Char('\n') + ResLabel->text());
}

void SimulatorPaneWidget::ShowPlayState(bool playing) {
    SizingBox->setEnabled(!playing);  // closes an open list, which would still take a choice
    SizingBox->setToolTip(playing ? tr("Scale mode cannot be changed while the preset is running.")
                                  : tr("Click to change scale mode"));
}

void SimulatorPaneWidget::ShowNotes() {
    const bool isSound = CurCfg.HasAsset() && Known && !Known->HasPicture;
    PlacementWidget->setEnabled(!isSound);
    QStringList notes;
    if (isSound) notes += tr("Sound only");
    if (!Remark.isEmpty()) notes += Remark;
    NoteLabel->setText(notes.join(QLatin1Char('\n')));
    NoteLabel->setVisible(!notes.isEmpty() || !CurCfg.ReadOnly);
}

void SimulatorPaneWidget::SetRemark(const QString& remark) {
    Remark = remark;
    ShowNotes();
}

void SimulatorPaneWidget::Detach() {
    SizingBox->hidePopup();
    CurCfg.Canvas = nullptr;
    CurCfg.CurPreset = nullptr;
    CurCfg.CurPresetState = nullptr;
}

SimButtonStates SimulatorPaneWidget::GetButtonStates() const {
    const auto pressed = [this](const QPushButton* arrow) { return !arrow->isEnabledTo(PlacementWidget); };
    return {.SizerBox = static_cast<std::uint32_t>(SizingBox->currentIndex()),
            .Up = pressed(TopArrow),
            .Down = pressed(BottomArrow),
            .Left = pressed(LeftArrow),
            .Right = pressed(RightArrow)};
}

void SimulatorPaneWidget::LoadButtonStates(const SimButtonStates& states) {
    const QSignalBlocker silence(SizingBox);
    SizingBox->setCurrentIndex(static_cast<int>(states.SizerBox));
    TopArrow->setEnabled(!states.Up);
    BottomArrow->setEnabled(!states.Down);
    LeftArrow->setEnabled(!states.Left);
    RightArrow->setEnabled(!states.Right);
}

void SimulatorPaneWidget::LoadButtonStatesFromPreset() {
    if (const auto states = InferButtonStates()) LoadButtonStates(*states);
}

bool SimulatorPaneWidget::KnowsPlacement() const {
    const Zorvic::PinnedAsset& asset = CurCfg.Canvas->Assets.front();
    return Known && Known->Path == asset.FullPath && Known->Coords == asset.PinnedCoords &&
           Known->CanvasSize == CurCfg.Canvas->CanvasCfg.Dimensions &&
           Known->Revision == MDCache.Revision(asset.FullPath);
}

std::optional<SimButtonStates> SimulatorPaneWidget::InferButtonStates() {
    if (!CurCfg.HasAsset()) return std::nullopt;
    if (KnowsPlacement()) return Known->States;
    const Zorvic::PinnedAsset& asset = CurCfg.Canvas->Assets.front();
    const std::unique_ptr<Zorvic::AssetMetadata> metadata(MDCache.LookupAsset(asset.FullPath));
    const Zorvic::Size2D pinned = asset.PinnedCoords;
    const Zorvic::Size2D size = metadata ? metadata->Resolution : pinned;
    Known = KnownPlacement{.Path = asset.FullPath,
                           .Coords = asset.PinnedCoords,
                           .CanvasSize = CurCfg.Canvas->CanvasCfg.Dimensions,
                           .Revision = MDCache.Revision(asset.FullPath),
                           .HasPicture = size != Zorvic::Size2D{},
                           .States = metadata ? FindStates(metadata->Resolution) : std::nullopt};
    return Known->States;
}

std::optional<SimButtonStates> SimulatorPaneWidget::FindStates(const Zorvic::Size2D& assetSize) const {
    const Zorvic::PinnedAsset& asset = CurCfg.Canvas->Assets.front();
    Zorvic::CanvasInfo attempt = *CurCfg.Canvas;
    for (const auto& [alignment, states] : GetSizingMaps().AlignmentToButtons) {
        attempt.Assets.clear();
        Zorvic::AttachAssetToCanvas(alignment, asset.FullPath, assetSize, attempt);
        if (!attempt.Assets.empty() && attempt.Assets.front().PinnedCoords == asset.PinnedCoords) return states;
    }
    return std::nullopt;
}

void SimulatorPaneWidget::ApplySizingFromButtonStates(const SimButtonStates& states, const std::string& assetPath) {
    const auto& alignments = GetSizingMaps().ButtonsToAlignment;
    const auto alignment = alignments.find(states);
    if (alignment == alignments.end()) {
        ZORVIC_LOG_ERROR << "Unknown state for sizing buttons!";
        return;
    }
    const std::unique_ptr<Zorvic::AssetMetadata> metadata(MDCache.LookupAsset(assetPath));
    if (!metadata) {
        ZORVIC_LOG_ERROR << "Unable to retrieve metadata for asset " << assetPath;
        return;
    }
    if (!CurCfg.Canvas) return;
    Zorvic::CanvasInfo placed = *CurCfg.Canvas;
    placed.Assets.clear();
    Zorvic::AttachAssetToCanvas(alignment->second, assetPath, metadata->Resolution, placed);
    // What the library cannot place (a size with one side 0) stays where it is instead of vanishing from the preset.
    if (placed.Assets.empty()) return;
    KeepPicture(placed.Assets.front());
    CurCfg.Canvas->Assets = std::move(placed.Assets);
}

// Moving an asset must not undo the picture adjustments that the operator made to it.
void SimulatorPaneWidget::KeepPicture(Zorvic::PinnedAsset& placed) const {
    if (!CurCfg.HasAsset()) return;
    const Zorvic::PinnedAsset& before = CurCfg.Canvas->Assets.front();
    if (before.FullPath != placed.FullPath) return;
    placed.Hue = before.Hue;
    placed.Saturation = before.Saturation;
    placed.Brightness = before.Brightness;
    placed.Contrast = before.Contrast;
}

void SimulatorPaneWidget::OnArrowClicked(QPushButton* button) {
    if (!CurCfg.HasAsset()) return;
    for (const auto& [one, other] : {std::pair(LeftArrow, RightArrow), std::pair(TopArrow, BottomArrow)}) {
        if (button == one) other->setEnabled(true);
        if (button == other) one->setEnabled(true);
    }
    if (button == ResetButton) {
        for (QPushButton* const each : {TopArrow, BottomArrow, LeftArrow, RightArrow, ResetButton})
            each->setEnabled(true);
    } else {
        button->setEnabled(!button->isEnabledTo(PlacementWidget));
    }
    const std::string path = CurCfg.Canvas->Assets.front().FullPath;
    ApplySizingFromButtonStates(GetButtonStates(), path);
    emit SizingChanged(this);
}

void SimulatorPaneWidget::OnSizingModeChanged() {
    if (!CurCfg.HasAsset()) return;
    const std::string path = CurCfg.Canvas->Assets.front().FullPath;
    ApplySizingFromButtonStates({.SizerBox = GetButtonStates().SizerBox}, path);
    emit SizingChanged(this);
}

void SimulatorPaneWidget::OnClearClicked() {
    if (!CurCfg.HasAsset()) return;
    CurCfg.Canvas->Assets.clear();
    SetConfig(GetCfg());
    emit SizingChanged(this);
}

void SimulatorPaneWidget::mousePressEvent(QMouseEvent* event) {
    event->accept();
    emit Clicked(this);
}

void SimulatorPaneWidget::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space || event->isAutoRepeat() || CurCfg.ReadOnly) return QWidget::keyPressEvent(event);
    emit Clicked(this);
}

void SimulatorPaneWidget::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    if (!hasFocus()) return;
    QPainter painter(this);
    painter.setPen(QPen(palette().color(QPalette::Highlight).lighter(130), 2));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

}  // namespace Simulator
