#pragma once

#include "ui_presetbuilder.h"

#include <zorvic/types.h>

#include <QWidget>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class AssetBrowser;
class MetadataCache;
class PlayerPanelWidget;
namespace Simulator {
class SimulatorPaneWidget;
class SimulatorWidget;
}  // namespace Simulator

/// Top-level window in which the operator composes one preset. It sends nothing to the unit: whoever hears
/// CreateClicked takes CompilePreset() and decides by its key whether to create or to update. GUI thread only.
class PresetBuilder : public QWidget, public Ui::PresetBuilderUI {
    Q_OBJECT

public:
    /// `cache` must outlive the builder.
    PresetBuilder(const std::string& guid, MetadataCache& cache);
    ~PresetBuilder() override;

    /// The preset as the form shows it, newly allocated and owned by the caller. Fields that the form does not show
    /// are those of the preset loaded last; canvases without an asset are left out.
    Zorvic::Preset* CompilePreset();
    /// Key of the preset being edited; 0 for a new one.
    int PresetKey() const { return CurPreset->PK; }
    /// Takes over what the unit holds of this preset now in all that the form does not show, so that a save undoes
    /// nobody's work: marks, trim, levels, colour, the other fades, picture values.
    void TakeOver(const Zorvic::Preset& current);
    /// The preset is gone from the unit: the next save creates it anew.
    void MakeNew() { CurPreset->PK = 0; }
    /// Called while CreateClicked is heard: the preset was not saved, and why. The form stays until the next edit or
    /// save as it is.
    void ShowFailure(const QString& why);
    /// Refreshes the list of presets to link to; the chosen one stays chosen while the unit has it.
    void UpdateCachedPresets(std::vector<Zorvic::Preset>&& presets);
    void RedrawPlayerPanels();

public slots:
    /// Reads the form into the preset and shows it anew.
    void Update();
    void RedrawFromPreset();
    /// Empties a filled canvas, asks for an asset for an empty one.
    void OnPaneClicked(Simulator::SimulatorPaneWidget* pane);
    /// Loads a preset for editing, with an empty canvas for each output of the unit that it leaves free. Without a
    /// session for the unit nothing changes.
    void SetPreset(const Zorvic::Preset& preset);

signals:
    /// The operator wants the preset saved. The window is hidden afterwards, unless ShowFailure was called.
    void CreateClicked();
    /// The operator gave up. The window is hidden already.
    void CloseClicked();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void SetUpShortcuts();
    void WireButtons();
    void WirePlaybackFields();
    void WireFailure();
    void OnSizingChanged();
    void OnFadeChanged();
    void OnFreezeChanged();
    void OnLoopForeverChanged();
    void SetNoLoop();
    void Save();
    void Close();
    void HoldWhatBoxesCannot();
    void ShowHeld();
    void StoreForm(Zorvic::Preset& preset) const;
    void RedrawKeepingForm();
    void ChooseLink(int pk);
    void AddPlayerPanels(std::uint32_t canvasIndex, Zorvic::CanvasInfo& canvas);
    void ShowMoves();
    void OnAssetsChosen(Simulator::SimulatorPaneWidget* pane, const QStringList& paths);
    bool Attach(const std::string& path, Zorvic::CanvasInfo& canvas);
    void ShowNotTaken(const std::string& path, const QString& why);
    QString WhyNoMetadata(const std::string& path) const;
    void EndChoosing();
    void FitToScreen();
    void FitPanels(const QSize& room);
    void OrderFocus();

    std::string GUID;
    std::unique_ptr<Zorvic::Preset> CurPreset;
    std::unique_ptr<AssetBrowser> BrowserDialog;
    Simulator::SimulatorWidget* SimWidget;
    std::vector<Zorvic::Preset> CachedPresets;
    std::vector<std::unique_ptr<PlayerPanelWidget>> Panels;
    MetadataCache& MDCache;
    // Loaded values that the boxes cannot hold, until the operator changes them.
    std::optional<int> HeldLoop;
    std::optional<int> HeldFade;
};
