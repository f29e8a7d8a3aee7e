#include "assetbrowser.h"
#include "presetbuilder.h"
#include "simulatorpane.h"
#include "support/consolewindows.h"
#include "support/unitprocess.h"
#include "zorvicview.h"

#include <gtest/gtest.h>

#include <zorvic/zorvic.h>

#include <QApplication>

#include <filesystem>
#include <functional>
#include <memory>

namespace {

using namespace Zorvic;

constexpr int LimitMS = 30000;
constexpr const char* Clip = "C:\\Assets\\clip.mov";

template <typename Widget>
Widget* TopLevel(const std::function<bool(const Widget&)>& matches) {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        auto* const found = qobject_cast<Widget*>(window);
        if (found && matches(*found)) return found;
    }
    return nullptr;
}

/// The console's windows in this process, on a unit of its own that holds a clip of three seconds.
class Authoring : public testing::Test {
protected:
    Authoring() {
        const std::string store = Directory.Path() + "/store";
        std::filesystem::create_directories(store + "/Assets");
        MakeClip(store + "/Assets/clip.mov", 3);
        Unit = std::make_unique<UnitProcess>(store, std::vector<std::string>{"--announce", "off"});
        Other = std::make_unique<Session>(Unit->Host(), 1);
        Console.Connect(Unit->Host());
        View = qobject_cast<ZorvicView*>(Console.Tabs()->currentWidget());
        Builder = TopLevel<PresetBuilder>([](const PresetBuilder&) { return true; });
    }

    static bool Becomes(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, LimitMS); }
    bool ClipIsReady() const {
        std::vector<Asset> assets;
        return Other->GetAssets(assets) == ZORVIC_STATUS_OK && assets.size() == 1 &&
               assets.front().Status == ZORVIC_ASSETSTATE_READY;
    }
    /// The one preset that the unit holds; an empty one when it holds none or several.
    Preset Stored() const {
        std::vector<Preset> presets;
        EXPECT_EQ(Other->GetPresets(presets), ZORVIC_STATUS_OK);
        return presets.size() == 1 ? presets.front() : Preset();
    }
    PresetState State() const {
        std::vector<PresetState> states;
        EXPECT_EQ(Other->GetPresetStates(states), ZORVIC_STATUS_OK);
        return states.size() == 1 ? states.front() : PresetState();
    }
    void ChooseClipFor(int column) const {
        const auto panes = Builder->findChildren<Simulator::SimulatorPaneWidget*>();
        QTest::mouseClick(panes.at(column)->PaneWidget, Qt::LeftButton);
        auto* const browser = TopLevel<AssetBrowser>([](const AssetBrowser& window) { return window.isVisible(); });
        ASSERT_NE(browser, nullptr);
        ASSERT_TRUE(Becomes([=] { return browser->AssetBrowserList->count() == 1; }));
        browser->AssetBrowserList->setCurrentRow(0);
        QTest::mouseClick(browser->SelectButton, Qt::LeftButton);
    }
    void Save() const { QTest::mouseClick(Builder->CreateButton, Qt::LeftButton); }

    TemporaryDirectory Directory;
    std::unique_ptr<UnitProcess> Unit;
    std::unique_ptr<Session> Other;  ///< sees what the unit holds without the console
    ConsoleWindows Console;
    ZorvicView* View = nullptr;
    PresetBuilder* Builder = nullptr;
};

TEST_F(Authoring, ABuiltPresetPlaysAndItsEditsReachTheUnitUntilTheUnitIsGone) {
    ASSERT_TRUE(Becomes([this] { return ClipIsReady(); }));
    QTest::mouseClick(View->AddPresetButton, Qt::LeftButton);
    QTest::keyClicks(Builder->focusWidget(), QStringLiteral("Opening"));
    ChooseClipFor(1);
    Save();
    ASSERT_TRUE(Becomes([this] { return Stored().Name == "Opening"; }));
    ASSERT_EQ(Stored().Canvases.size(), 1U);
    EXPECT_EQ(Stored().Canvases.front().Assets.at(0).FullPath, Clip);

    ASSERT_TRUE(Becomes([this] { return View->PresetsView->topLevelItemCount() == 1; }));
    View->PresetsView->setCurrentItem(View->PresetsView->topLevelItem(0));
    QTest::mouseClick(View->TakeButton, Qt::LeftButton);
    ASSERT_TRUE(Becomes([this] { return State().IsPlaying; }));
    AssetMetadata metadata;
    ASSERT_EQ(Other->ReadAssetMetadata(Clip, metadata), ZORVIC_STATUS_OK);
    EXPECT_EQ(State().TRT, metadata.Duration);
    EXPECT_NEAR(metadata.Duration, 3000, 200);

    QTest::mouseClick(View->EditPresetButton, Qt::LeftButton);
    ChooseClipFor(2);
    Builder->NotesBox->setText(QStringLiteral("twice"));
    Save();
    EXPECT_TRUE(Becomes([this] { return Stored().Notes == "twice" && Stored().Canvases.size() == 2; }));

    QTest::mouseClick(View->EditPresetButton, Qt::LeftButton);
    Builder->PresetNameBox->setText(QStringLiteral("Lost"));
    Unit->Kill();
    testing::internal::CaptureStderr();
    Save();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Failed to create preset with Name Lost\n"),
              std::string::npos);
    EXPECT_EQ(Builder->PresetNameBox->text(), QString());  // whatever became of it, the next preset starts afresh
}

}  // namespace
