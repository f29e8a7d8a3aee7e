#include "mainwindow.h"

#include "sessionmanager.h"
#include "support/fakezorvic.h"
#include "zorvicview.h"

#include <gmock/gmock.h>

#include <QPointer>
#include <QTimer>

#include <memory>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t EventTypes = 5;

class Shell : public testing::Test {
protected:
    Shell() {
        FakeZorvic::Reset();
        FakeZorvic::ClearCalls();
        FakeZorvic::AddUnit("10.0.0.1", "guid-1", "Stage & Hall");
        FakeZorvic::AddUnit("10.0.0.2", "guid-2", "guid-2");
    }

    ZorvicView* Connect(const std::string& host) {
        const std::unique_ptr<SessionHandle> handle(Sessions.CreateSessionByIP(host));
        return Window->AddView(handle->GetSession());
    }
    void CloseTab(ZorvicView* view) { emit Window->ZorvicTabs->tabCloseRequested(Window->ZorvicTabs->indexOf(view)); }
    std::vector<std::string> Labels() const {
        std::vector<std::string> labels;
        labels.reserve(static_cast<std::size_t>(Window->ZorvicTabs->count()));
        for (int index = 0; index < Window->ZorvicTabs->count(); ++index)
            labels.push_back(Window->ZorvicTabs->tabText(index).toStdString());
        return labels;
    }
    void UseEveryUnitMenu() {
        Window->OnCreatePresetClicked();
        Window->OnEditPresetClicked();
        Window->OnClonePresetClicked();
        Window->OnDeletePresetClicked();
        Window->CallPowerMethod(&Zorvic::Session::SoftRebootZorvic);
        Window->CallPowerMethod(&Zorvic::Session::RebootZorvic);
        Window->CallPowerMethod(&Zorvic::Session::ShutdownZorvic);
    }

    SessionManager Sessions;
    std::unique_ptr<MainWindow> Window = std::make_unique<MainWindow>();
};

TEST_F(Shell, ShowsEachUnitInATabWhichConnectingAgainReplacesAtTheEnd) {
    const QPointer<ZorvicView> first = Connect("10.0.0.1");
    auto* second = Connect("10.0.0.2");
    EXPECT_THAT(Labels(), ElementsAre("10.0.0.1:Stage && Hall", "10.0.0.2"));
    EXPECT_EQ(Window->ZorvicTabs->currentWidget(), second);
    const auto* again = Connect("10.0.0.1");
    EXPECT_TRUE(first.isNull());
    EXPECT_THAT(Labels(), ElementsAre("10.0.0.2", "10.0.0.1:Stage && Hall"));
    EXPECT_EQ(FakeZorvic::Registrations(again), EventTypes);
    EXPECT_EQ(FakeZorvic::Registrations(), 2 * EventTypes);
    Window.reset();
    EXPECT_EQ(FakeZorvic::Registrations(), 0U);
}

TEST_F(Shell, AClosedTabIsUnregisteredBeforeItDiesAndItsSessionStays) {
    const QPointer<ZorvicView> closed = Connect("10.0.0.1");
    const auto* other = Connect("10.0.0.2");
    bool aliveThroughout = true;
    FakeZorvic::SetHook([&](const FakeZorvic::Call&) { aliveThroughout = aliveThroughout && closed; });
    CloseTab(closed);
    FakeZorvic::SetHook(nullptr);
    EXPECT_TRUE(aliveThroughout);
    EXPECT_TRUE(closed.isNull());
    EXPECT_EQ(FakeZorvic::Registrations(other), EventTypes);
    EXPECT_EQ(FakeZorvic::Registrations(), EventTypes);
    EXPECT_EQ(FakeZorvic::LiveSessions("10.0.0.1"), 1U);
    emit Window->ZorvicTabs->tabCloseRequested(7);
    EXPECT_THAT(Labels(), ElementsAre("10.0.0.2"));
}

TEST_F(Shell, UnitMenusReachTheUnitOfTheCurrentTabOnly) {
    UseEveryUnitMenu();
    EXPECT_THAT(FakeZorvic::Calls(), IsEmpty()) << "without a tab";
    EXPECT_FALSE(Window->ShutdownMenuItem->isEnabled());
    auto* first = Connect("10.0.0.1");
    Connect("10.0.0.2");
    Window->SoftRebootMenuItem->trigger();
    EXPECT_EQ(FakeZorvic::LastCall("SoftRebootZorvic").Host, "10.0.0.2");
    Window->ZorvicTabs->setCurrentIndex(Window->ZorvicTabs->indexOf(first));
    Window->RebootMenuItem->trigger();
    Window->ShutdownMenuItem->trigger();
    EXPECT_EQ(FakeZorvic::LastCall("RebootZorvic").Host, "10.0.0.1");
    Sessions.DeleteSessionByGUID("guid-1");
    UseEveryUnitMenu();
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SoftRebootZorvic", "RebootZorvic", "ShutdownZorvic"));
}

TEST_F(Shell, AUnitThatDoesNotTellItsIdGetsNoTabAndTheOldOneKeepsItsEvents) {
    const auto* view = Connect("10.0.0.1");
    const std::unique_ptr<SessionHandle> handle(Sessions.CreateSessionByIP("10.0.0.1"));
    ASSERT_EQ(FakeZorvic::Registrations(view), 0U) << "they went with the old session";
    FakeZorvic::At("10.0.0.1").Fail("GetUnitID", Zorvic::ZORVIC_STATUS_NETWORKERROR);
    EXPECT_EQ(Window->AddView(handle->GetSession()), nullptr);
    EXPECT_EQ(Window->ZorvicTabs->count(), 1);
    EXPECT_EQ(FakeZorvic::Registrations(view), EventTypes);
}

TEST_F(Shell, ASessionReplacedWhileItsTabIsBuiltGetsNoTab) {
    auto* session = std::unique_ptr<SessionHandle>(Sessions.CreateSessionByIP("10.0.0.1"))->GetSession();
    // Runs inside the event loop of the first scan.
    QTimer::singleShot(0, Window.get(),
                       [this] { std::unique_ptr<SessionHandle>(Sessions.CreateSessionByIP("10.0.0.1")); });
    EXPECT_EQ(Window->AddView(session), nullptr);
    EXPECT_EQ(Window->ZorvicTabs->count(), 0);
    EXPECT_EQ(FakeZorvic::Registrations(), 0U);
}

TEST_F(Shell, QuitEndsTheProcessAtOnceWithStatusZero) {
    Connect("10.0.0.1");
    EXPECT_EXIT(Window->actionQuit->trigger(), testing::ExitedWithCode(0), "");
}

}  // namespace
