#include "aboutdialog.h"
#include "application.h"
#include "comparewindow.h"
#include "fixtures.h"

#include <QPointer>

#include <stdexcept>

namespace {

constexpr int EventTypes = 5;

/// A main window and the units "host" and "other".
class Shell : public UnitTest {
protected:
    Shell() {
        Unit.Nickname = "Stage & Hall";
        FakeZorvic::AddUnit("other", "guid-2");
        FakeZorvic::Calls.clear();
    }

    ZorvicView* Connect(const std::string& host) {
        const std::unique_ptr<SessionHandle> handle(Sessions.CreateSessionByIP(host));
        return Window->AddView(handle->GetSession());
    }
    void CloseTab(ZorvicView* view) { emit Window->ZorvicTabs->tabCloseRequested(Window->ZorvicTabs->indexOf(view)); }
    std::vector<std::string> Labels() const {
        std::vector<std::string> labels;
        for (int index = 0; index < Window->ZorvicTabs->count(); ++index)
            labels.push_back(Window->ZorvicTabs->tabText(index).toStdString());
        return labels;
    }
    void UseEveryUnitMenu() {
        for (const auto act : {&MainWindow::OnCreatePresetClicked, &MainWindow::OnEditPresetClicked,
                               &MainWindow::OnClonePresetClicked, &MainWindow::OnDeletePresetClicked})
            ((*Window).*act)();
        Window->CallPowerMethod(&Zorvic::Session::SoftRebootZorvic);
    }

    std::unique_ptr<MainWindow> Window = std::make_unique<MainWindow>();
};

TEST_F(Shell, ATabIsUnregisteredBeforeItDiesReplacedAtTheEndOrClosed) {
    const QPointer<ZorvicView> first = Connect("host");
    const auto* other = Connect("other");
    EXPECT_THAT(Labels(), ElementsAre("host:Stage && Hall", "other"));
    EXPECT_EQ(Window->ZorvicTabs->currentWidget(), other);
    const QPointer<ZorvicView> again = Connect("host");
    EXPECT_TRUE(first.isNull());
    EXPECT_THAT(Labels(), ElementsAre("other", "host:Stage && Hall"));
    EXPECT_EQ(FakeZorvic::Registrations(again), EventTypes);
    bool aliveThroughout = true;
    FakeZorvic::Hook = [&](const FakeZorvic::Call&) { aliveThroughout = aliveThroughout && again; };
    CloseTab(again);
    FakeZorvic::Hook = nullptr;
    EXPECT_TRUE(aliveThroughout);
    EXPECT_TRUE(again.isNull());
    EXPECT_EQ(FakeZorvic::Registrations(), EventTypes);
    EXPECT_EQ(FakeZorvic::LiveSessions("host"), 1) << "the session stays";
    Window.reset();
    EXPECT_EQ(FakeZorvic::Registrations(), 0);
}

TEST_F(Shell, TwoUnitsAreComparedWhenItIsAskedForAndNotBefore) {
    auto& other = FakeZorvic::AddUnit("other", "guid-2");
    for (auto* unit : {&Unit, &other}) {
        Zorvic::Preset storm;
        storm.Name = "Storm";
        storm.TabDisplayOrder[0] = {};
        storm.Loop = unit == &Unit ? 0 : 3;
        unit->AddPreset(storm, 1000);
    }
    Connect("host");
    Connect("other");
    EXPECT_EQ(TopLevel<CompareWindow>(), nullptr);
    Window->CompareMenuItem->trigger();
    const QPointer<CompareWindow> shown = TopLevel<CompareWindow>();
    ASSERT_TRUE(shown);
    const auto isCompared = [&] { return shown->CompareButton->isEnabled(); };
    EXPECT_FALSE(isCompared()) << "the window does not wait for it";
    ASSERT_TRUE(QTest::qWaitFor(isCompared));
    EXPECT_EQ(Row(shown->Differences, 0), "Storm,Loop,0,3");
    EXPECT_EQ(shown->Differences->topLevelItemCount(), 1);
    other.Presets[0].Loop = 0;
    EXPECT_EQ(shown->Differences->topLevelItemCount(), 1) << "nothing changes unasked";
    shown->CompareButton->click();
    ASSERT_TRUE(QTest::qWaitFor(isCompared));
    EXPECT_EQ(shown->SummaryLabel->text(), QStringLiteral("No differences."));
    Disconnect();
    shown->CompareButton->click();
    EXPECT_TRUE(shown->SummaryLabel->text().endsWith(QStringLiteral("does not answer.")));
    shown->close();
}

TEST_F(Shell, UnitMenusReachTheUnitOfTheCurrentTabOnly) {
    UseEveryUnitMenu();
    EXPECT_TRUE(FakeZorvic::Calls.empty()) << "without a tab";
    EXPECT_FALSE(Window->ShutdownMenuItem->isEnabled());
    auto* first = Connect("host");
    Connect("other");
    Window->SoftRebootMenuItem->trigger();
    EXPECT_EQ(FakeZorvic::LastCall("SoftRebootZorvic").Host, "other");
    Window->ZorvicTabs->setCurrentIndex(Window->ZorvicTabs->indexOf(first));
    Window->RebootMenuItem->trigger();
    Window->ShutdownMenuItem->trigger();
    EXPECT_EQ(FakeZorvic::LastCall("RebootZorvic").Host, "host");
    Disconnect();
    UseEveryUnitMenu();
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SoftRebootZorvic", "RebootZorvic", "ShutdownZorvic"));
}

TEST_F(Shell, AUnitThatDoesNotTellItsIdGetsNoTabAndTheOldOneKeepsItsEvents) {
    const auto* view = Connect("host");
    const std::unique_ptr<SessionHandle> handle(Sessions.CreateSessionByIP("host"));
    ASSERT_EQ(FakeZorvic::Registrations(view), 0) << "they went with the old session";
    Unit.Fail("GetUnitID", Zorvic::ZORVIC_STATUS_NETWORKERROR);
    EXPECT_EQ(Window->AddView(handle->GetSession()), nullptr);
    EXPECT_EQ(Window->ZorvicTabs->count(), 1);
    EXPECT_EQ(FakeZorvic::Registrations(view), EventTypes);
}

TEST_F(Shell, ASessionReplacedWhileItsTabIsBuiltGetsNoTab) {
    // Runs inside the event loop of the first scan.
    QTimer::singleShot(0, Window.get(), [this] { Reconnect(); });
    EXPECT_EQ(Connect("host"), nullptr);
    EXPECT_EQ(Window->ZorvicTabs->count(), 0);
    EXPECT_EQ(FakeZorvic::Registrations(), 0);
}

TEST_F(Shell, AboutTellsTheVersionsOfTheLibraryAndOfEachUnitThatAnswers) {
    Connect("host");
    Connect("other");
    FakeZorvic::Units["other"]->Reachable = false;
    Window->AboutMenuItem->trigger();
    const QPointer<AboutDialog> about = TopLevel<AboutDialog>();
    EXPECT_EQ(about->VersionsLabel->text().toStdString(),
              "Library: version 1.2.3\nUnit host: version 4.5, protocol 1.9\nUnit other: does not tell its version");
    about->close();
}

TEST_F(Shell, QuitEndsTheProcessAtOnceWithStatusZero) {
    Connect("host");
    EXPECT_EXIT(Window->actionQuit->trigger(), testing::ExitedWithCode(0), "");
}

TEST(ApplicationObject, LogsWhatEscapesAHandlerAndGoesOn) {
    testing::internal::CaptureStderr();
    QTimer::singleShot(0, qApp, [] { throw std::out_of_range("no such entry"); });
    QTimer::singleShot(0, qApp, [] { throw 42; });
    QTimer::singleShot(0, qApp, &QApplication::quit);
    QApplication::exec();
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex("ZorvicUI: ERROR: .*no such entry\n.*unknown type.*\n"));
}

}  // namespace
