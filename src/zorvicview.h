#pragma once

#include "metadata_cache.h"
#include "sessionmanager.h"
#include "ui_zorvicview.h"
#include "view/round.h"

#include <zorvic/session.h>

#include <QPixmap>
#include <QString>
#include <QTime>
#include <QWidget>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

class AssetBrowser;
class AssetRows;
class LostLink;
class MarkTables;
class MixDesk;
class PlayHeadWidget;
class PresetBuilder;
class PresetRows;
class PresetTreeDelegate;
class Refusals;
class Timecodes;
namespace Simulator {
class SimulatorWidget;
}

/// The tab that shows and drives one unit. The unit is the authority: commands do not change the display, the unit's
/// next state event does. No session is kept; every operation looks it up by the GUID and does nothing without one.
///
/// GUI thread only, but for OnStateEvent and SetViewUpdateFlag. Whoever registers OnStateEvent with a session
/// unregisters it before the view dies. AcceptPresets, AcceptPresetStates, AcceptAssets, ProcessViewUpdateFlags and the
/// context menu run the event loop: the view may be gone when they return.
class ZorvicView : public QWidget, public Ui::ZorvicViewUI {
    Q_OBJECT

public:
    /// One bit per kind of state event: 1 shifted left by the type minus 1.
    enum class ViewUpdateFlags : std::uint32_t {
        INVALID = 0,
        PRESETS = 1,
        MINVALUE = 1,
        PSTATES = 2,
        ASSETS = 4,
        HWSTATE = 8,
        TIMECODE = 16,
        MAXVALUE = 16
    };
    enum class PresetColumn { INVALID, STATUS, PK, NAME, NOTES, TIME, TRT, LOOP, LINK, MAX };
    enum class AssetColumn { INVALID, NAME, STATUS, FOLDER, TRT, SIZE, DIMENSIONS, CODEC, ABITRATE, ACHANNELS, MAX };
    enum class GotosColumn { INVALID, INDEX, GOBUTTON, NAME, POSITION, MAX };
    enum class CountdownsColumn { INVALID, INDEX, NAME, POSITION, REMAINING, MAX };

    static const std::unordered_map<PresetColumn, std::string> PresetFieldNames;
    static const std::unordered_map<AssetColumn, std::string> AssetFieldNames;
    static const std::unordered_map<GotosColumn, std::string> GotosFieldNames;
    static const std::unordered_map<CountdownsColumn, std::string> CountdownsFieldNames;
    static constexpr int AssetNameColumnWidth = 256;

    static constexpr int PresetColumnTypeToIndex(PresetColumn column) { return static_cast<int>(column) - 1; }
    static constexpr int AssetColumnTypeToIndex(AssetColumn column) { return static_cast<int>(column) - 1; }
    static constexpr int GotosColumnTypeToIndex(GotosColumn column) { return static_cast<int>(column) - 1; }
    static constexpr int CountdownsColumnTypeToIndex(CountdownsColumn column) { return static_cast<int>(column) - 1; }

    // Frame: zorvicview.cpp

    /// Scans the unit's assets before it returns, with a progress window and the event loop running.
    ZorvicView(const std::string& guid, const std::string& ip);
    ~ZorvicView() override;

    const std::string& GetGUID() const { return GUID; }
    /// A handle without a session when the unit is gone.
    SessionHandle GetSessionHandle() const;
    /// Says in the status line why the unit did not do what was asked for; a command that succeeded changes nothing.
    void Report(const QString& what, const Zorvic::Session* session, Zorvic::StatusCode status) const;

    /// The state-event callback; `view` is the ZorvicView. Any thread.
    static void OnStateEvent(Zorvic::StateEventType type, void* view);
    /// Any thread.
    void SetViewUpdateFlag(Zorvic::StateEventType type);
    /// ZORVIC_STATE_INVALID clears all.
    void ClearViewUpdateFlag(Zorvic::StateEventType type);
    ViewUpdateFlags PopViewUpdateFlags();

    /// Sees what happens to the preset list, and takes the end of a drag.
    bool eventFilter(QObject* object, QEvent* event) override;

    // Preset list: zorvicview_presets.cpp

    /// Rebuilds the list and shows the unit's selected preset in all panes. Throws std::out_of_range for a preset
    /// without a place in the current tab; nothing has changed then.
    void AcceptPresets(const std::vector<Zorvic::Preset>& list);
    void AcceptPresetStates();
    std::unordered_map<int, Zorvic::PresetState> GetPresetStates(Zorvic::Session* session) const;
    static QPixmap GetIconForPreset(const Zorvic::PresetState& state);
    void UpdatePresetLabels(const Zorvic::Preset& preset);
    QTreeWidgetItem* GetSelectedPresetItem() const;
    QList<QTreeWidgetItem*> GetSelectedPresetItems() const;
    std::unique_ptr<Zorvic::Preset> GetSelectedPreset(Zorvic::Session* session = nullptr) const;
    /// A selected key that the unit does not have gives a default-constructed preset.
    std::unordered_map<int, Zorvic::Preset> GetSelectedPresets(Zorvic::Session* session = nullptr) const;
    QTreeWidgetItem* LookupPresetItem(int pk) const;
    std::unique_ptr<Zorvic::Preset> LookupPreset(Zorvic::Session* session, int pk) const;
    std::unique_ptr<Zorvic::PresetState> LookupPresetState(Zorvic::Session* session, int pk) const;
    /// Gives every preset the place of its row, after rows were dragged.
    void RebuildTabOrderings();

    // Transport: zorvicview_transport.cpp

    QTime GetSeekBoxTime() const;

    // Timecodes and marks: zorvicview_marks.cpp

    void AcceptTimeCodes(const std::unordered_map<int, Zorvic::TimeCode>& codes);
    /// Shows a preset at rest.
    void SetBaseTRT(Zorvic::Session* session, int pk);
    void UpdateGCs(const Zorvic::Preset& preset, const Zorvic::PresetState& state);
    void UpdateCountdowns(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                          const Zorvic::TimeCode& timeCode);
    static QString RemainingTimeToColor(int remainingMS);

    // Assets: zorvicview_assets.cpp

    void AcceptAssets(const std::vector<Zorvic::Asset>& assets);
    void UpdateAssetsLabel(const std::vector<Zorvic::Asset>& assets);
    void InitialAssetScan();

    // Mix: zorvicview_mix.cpp

    void SetVolSliders(const Zorvic::Preset& preset);
    void SetVideoSliderPlayers(const Zorvic::Preset& preset);
    void UpdateVideoSliders(const Zorvic::Preset& preset);
    void OnVideoSliderChanged(float value, float Zorvic::PinnedAsset::*member);

signals:
    /// The link to the unit has gone, or come back.
    void LinkChanged(bool lost);

public slots:
    void ProcessViewUpdateFlags();
    void UpdateStatus();
    void CheckConnection();
    void OnSizingChanged();

    void OnPresetSelected();
    void ToggleCreatePreset();
    void EditSelectedPreset();
    void CloneSelectedPresets();
    void DeleteSelectedPresets();
    void OnCreatorDone();
    void OnPresetRightClick(const QPoint& point);

    void OnTakePressed();
    void OnPausePressed();
    void OnEndPressed();
    void OnEnterKeyPressed();
    void OnGoto30Pressed();
    void OnGoto10Pressed();
    void OnDirectSeek();
    /// Steps the play head by 50 ms: towards the end when true.
    void OnSeekKey(bool back);
    void OnSetInPointClicked();
    void OnSetOutPointClicked();
    void OnResetTrimClicked();
    void OnScrubMoved(int remaining);
    void OnTrimStartMoved(int remaining);
    void OnTrimEndMoved(int remaining);

    void OnNewGCClicked(bool countdown);
    void OnGotoChanged(QTreeWidgetItem* item, int column);
    void OnCountdownChanged(QTreeWidgetItem* item, int column);
    void OnDelGotoClicked();
    void OnDelCountdownClicked();
    void OnGotoTriggered(int pk, int timeMS);

    void OnAssetDeleteClicked();
    void OnAssetImportClicked();
    void OnAssetToggleClicked();

    void OnVolSliderMoved(int value, QSlider* slider);

private:
    using EditPreset = std::function<bool(Zorvic::Preset&)>;

    // Frame
    void SetUpPanes();
    void SetUpColumns();
    void SetUpRooms();
    void StartTimer(std::chrono::milliseconds period, void (ZorvicView::*slot)());
    void WireDialogs();
    void WireLayoutPane();
    void SetUpMonitors();
    std::unique_ptr<SessionHandle> LookupSession() const;
    /// For one operation on what is selected now.
    Round BeginRound() const;
    Round BeginRound(Zorvic::Session* session) const;
    /// False ends the round. The view may be gone then, and otherwise too.
    bool RefreshFor(ViewUpdateFlags flag, Round& round);
    void ShowLink(bool connected, const QString& problem);
    void EditCurrent(const QString& what, const EditPreset& edit) const;

    // Preset list
    void SetUpPresetList();
    void WirePresetList();
    bool RefreshPresets(Round& round);
    void ShowPresets(Round& round, const std::vector<Zorvic::Preset>& list);
    void ShowCurrentPreset(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                           const std::optional<Zorvic::TimeCode>& timeCode);
    void ShowNoPreset();
    /// Key of the current preset, 0 without one.
    int CurrentPK() const;
    void Edit(const std::vector<int>& keys);
    void Clone(const std::vector<int>& keys);
    void Delete(const std::vector<int>& keys);

    // Transport
    void WireTransport();
    void OnEscapePressed();
    void OnSeekEditingFinished();
    using PresetCommand = Zorvic::StatusCode (Zorvic::Session::*)(std::int32_t);
    void CommandSelection(const QString& what, PresetCommand command);
    void Seek(Round& round, int pk, int remainingMS) const;
    using SeekTarget = int (*)(const Zorvic::Preset&, const Zorvic::PresetState&);
    void GotoBeforeOut(int beforeOutMS, SeekTarget target);

    // Keys: zorvicview_keys.cpp
    void WireShortcuts();
    void OrderFocus();
    /// What F6 goes round.
    std::vector<QWidget*> Panes() const;
    void MoveToPane(int step);
    void OnNextPanePressed();
    void OnPreviousPanePressed();

    // Timecodes and marks
    void WireMarks();
    void ShowTimeCodes(Round& round, const std::unordered_map<int, Zorvic::TimeCode>& codes);
    bool RefreshTimeCodes(Round& round);
    void ShowTimes(Round& round, int pk);
    void ShowStanding(Round& round, int pk);
    void RenameMark(QTreeWidgetItem* item, bool countdown);
    void DeleteMarks(bool countdowns);

    // Assets
    void WireAssets();

    // Mix
    void RefreshMix();

    MetadataCache MDCache;
    std::string GUID;
    std::string IP;
    std::unique_ptr<AssetBrowser> BrowserDialog;
    std::unique_ptr<PresetBuilder> PresetDialog;
    ::Simulator::SimulatorWidget* Simulator;
    PlayHeadWidget* ScrubBar;
    std::unique_ptr<PresetTreeDelegate> PresetTreeDelegateObj;
    std::mutex FlagMutex;  ///< guards UpdateFlags; held for one bit operation, never together with the registry's lock
    ViewUpdateFlags UpdateFlags = ViewUpdateFlags::INVALID;
    int CurPresetTab = 0;
    bool AssetViewExpanded = false;

    // The rooms: each works on widgets of its own and knows no other.
    std::unique_ptr<PresetRows> Rows;
    std::unique_ptr<AssetRows> AssetList;
    std::unique_ptr<Timecodes> Clock;
    std::unique_ptr<MarkTables> Marks;
    std::unique_ptr<MixDesk> Mix;
    std::unique_ptr<LostLink> Link;
    std::unique_ptr<Refusals> Refused;
    std::shared_ptr<Round::Lists> SpareLists = std::make_shared<Round::Lists>();
};
