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

/// A visible window when there is one.
template <typename Widget>
Widget* TopLevel() {
    Widget* best = nullptr;
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        auto* const found = qobject_cast<Widget*>(window);
        if (found && (!best || found->isVisible())) best = found;
    }
    return best;
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
        Builder = TopLevel<PresetBuilder>();
    }

    static bool Becomes(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, LimitMS); }
    /// The one record that the unit holds; an empty one when it holds none or several.
    template <typename Record>
    Record Only(StatusCode (Session::*read)(std::vector<Record>&)) const {
        std::vector<Record> records;
        EXPECT_EQ((*Other.*read)(records), ZORVIC_STATUS_OK);
        return records.size() == 1 ? records.front() : Record();
    }
    Preset Stored() const { return Only(&Session::GetPresets); }
    PresetState State() const { return Only(&Session::GetPresetStates); }
    void ChooseClipFor(int column) const {
        const auto panes = Builder->findChildren<Simulator::SimulatorPaneWidget*>();
        QTest::mouseClick(panes.at(column)->PaneWidget, Qt::LeftButton);
        auto* const browser = TopLevel<AssetBrowser>();
        ASSERT_TRUE(browser->isVisible());
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

TEST_F(Authoring, ABuiltPresetPlaysAndItsEditsReachTheUnit) {
    ASSERT_TRUE(Becomes([this] { return Only(&Session::GetAssets).Status == ZORVIC_ASSETSTATE_READY; }));
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
    EXPECT_NEAR(State().TRT, 3000, 200);

    QTest::mouseClick(View->EditPresetButton, Qt::LeftButton);
    ChooseClipFor(2);
    Builder->NotesBox->setText(QStringLiteral("twice"));
    Save();
    EXPECT_TRUE(Becomes([this] { return Stored().Notes == "twice" && Stored().Canvases.size() == 2; }));
}

}  // namespace
