// An operator who does anything at all, against a model of what each gesture asks for. The unit and other consoles
// change things in between. ZORVIC_GESTURES sets how many gestures are made, ZORVIC_SEED where they begin.

#include "fixtures.h"
#include "mainwindow.h"
#include "playheadwidget.h"

#include <QMenu>

#include <random>
#include <set>

using namespace Zorvic;

namespace {

unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

class GesturesTest : public ViewTest {
protected:
    struct Asked {
        std::set<std::string> Operations;  ///< that the gesture may send
        bool OnAllSelected = false;        ///< to each selected preset; otherwise to the current one
    };

    int Below(int end) { return static_cast<int>(Random() % static_cast<unsigned>(end)); }
    template <typename T>
    T OneOf(std::initializer_list<T> choices) {
        return choices.begin()[Below(static_cast<int>(choices.size()))];
    }
    QTreeWidget& List() const { return *Shown->PresetsView; }
    int AnyKey() { return Unit.Presets[static_cast<std::size_t>(Below(static_cast<int>(Unit.Presets.size())))].PK; }

    std::set<int> Selected() const {
        std::set<int> keys;
        for (const auto* row : List().selectedItems())
            keys.insert(row->text(1).toInt());
        return keys;
    }
    int Current() const {
        const auto* row = Shown->GetSelectedPresetItem();
        return row ? row->text(1).toInt() : 0;
    }

    void Refresh() {
        // A unit does what it is told.
        for (const auto& call : FakeZorvic::Calls())
            if (call.Operation == "SelectPreset" && Unit.FindState(call.PK)) SelectOnUnit(call.PK);
        FakeZorvic::ClearCalls();
        for (const auto type : {ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_TIMECODE})
            Shown->SetViewUpdateFlag(type);
        Shown->ProcessViewUpdateFlags();
        for (const auto& command : FakeZorvic::Commands())
            EXPECT_TRUE(command.starts_with("UpdatePreset")) << command << " by a refresh";
        FakeZorvic::ClearCalls();
    }

    void ChangeTheUnit() {
        const int pk = AnyKey();
        switch (Below(6)) {
            case 0:
                SelectOnUnit(pk);
                break;
            case 1:
                Play(pk, Below(60000));
                State(pk).IsPaused = Below(2) == 0;
                break;
            case 2:
                State(pk).IsPlaying = State(pk).IsPaused = false;
                Unit.TimeCodes.erase(pk);
                break;
            case 3:
                AddPreset("Another", 60000);
                break;
            case 4:
                if (Unit.Presets.size() > 3) Forget(pk);
                break;
            default:
                Preset(pk).TabDisplayOrder[0].Index = Below(20);
        }
        Refresh();
    }

    Qt::KeyboardModifiers AnyModifier() {
        return OneOf({Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier});
    }
    Asked PressInTheList() {
        List().setFocus();
        switch (const auto key = OneOf({Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape, Qt::Key_Up, Qt::Key_Down,
                                        Qt::Key_Home, Qt::Key_End, Qt::Key_PageDown, Qt::Key_F, Qt::Key_A})) {
            case Qt::Key_Return:
            case Qt::Key_Enter:
                QTest::keyClick(Window.windowHandle(), key);
                return {{"Take", "Pause"}, true};
            case Qt::Key_Escape:
                QTest::keyClick(Window.windowHandle(), key);
                return {{"End"}, true};
            default:
                QTest::keyClick(&List(), key, key == Qt::Key_A ? Qt::ControlModifier : AnyModifier());
                return {{"SelectPreset"}};
        }
    }
    Asked ClickARow() {
        auto* const row = List().topLevelItem(Below(List().topLevelItemCount()));
        QTest::mouseClick(List().viewport(), Qt::LeftButton, AnyModifier(), List().visualItemRect(row).center());
        return {{"SelectPreset"}};
    }
    Asked ClickAButton() {
        static const std::vector<std::pair<const char*, Asked>> Buttons = {
            {"TakeButton", {{"Take"}, true}},         {"PauseButton", {{"Pause"}, true}},
            {"EndButton", {{"End"}, true}},           {"Goto10Button", {{"SeekTo"}, true}},
            {"Goto30Button", {{"SeekTo"}, true}},     {"InPointButton", {{"UpdatePreset"}}},
            {"ResetTrimButton", {{"UpdatePreset"}}},  {"GotosNewButton", {{"CreateGoto"}}},
            {"CDDeleteButton", {{"DeleteCountdown"}}}};
        const auto& [name, asked] = Buttons[static_cast<std::size_t>(Below(static_cast<int>(Buttons.size())))];
        Shown->findChild<QPushButton*>(QString::fromLatin1(name))->click();
        return asked;
    }
    Asked TypeATime() {
        Shown->SeekBox->setFocus();
        QTest::keyClicks(Shown->SeekBox, QStringLiteral("20"));
        if (Below(3) == 0) ChangeTheUnit();
        switch (Below(4)) {
            case 0:
                QTest::keyClick(Window.windowHandle(), Qt::Key_Return);
                return {{"SeekTo"}};
            case 1:
                QTest::keyClick(Window.windowHandle(), Qt::Key_Escape);
                break;
            case 2:
                Shown->TakeButton->setFocus();
                break;
            default:
                UseTheMenuBar();
        }
        return {};
    }
    Asked UseTheMenuBar() {
        if (Below(2) == 0) {
            QTest::mouseClick(Window.menuBar(), Qt::LeftButton, {}, {10, 10});
        } else {
            Window.menuBar()->setFocus(Qt::MenuBarFocusReason);
            QTest::keyClick(Window.windowHandle(), OneOf({Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}));
        }
        while (auto* const menu = QApplication::activePopupWidget())
            menu->close();
        List().setFocus();
        return {};
    }
    Asked DragTheHead() {
        auto& bar = *Shown->findChild<PlayHeadWidget*>();
        const auto at = [&] { return QPoint(16 + Below(bar.width() - 32), 30); };
        QTest::mousePress(&bar, Qt::LeftButton, {}, at());
        const bool elsewhere = Below(2) == 0;
        const int before = Current();
        EXPECT_TRUE(SentOnly({{"SeekTo"}}, {before}, before));
        if (elsewhere) ChangeTheUnit();
        QTest::mouseMove(&bar, at());
        QTest::mouseRelease(&bar, Qt::LeftButton, {}, at());
        if (Current() == before) return {{"SeekTo"}};
        return {};
    }
    Asked OpenTheListsMenu() {
        QTimer::singleShot(0, qApp, [this] {
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (Below(2) == 0) ChangeTheUnit();
            QTest::keyClick(menu, OneOf({Qt::Key_Return, Qt::Key_Escape}));
            if (QApplication::activePopupWidget()) menu->close();
        });
        emit List().customContextMenuRequested({5, 5});
        return {};
    }

    Asked MakeAGesture() {
        switch (Below(8)) {
            case 0:
                return ClickARow();
            case 1:
                return ClickAButton();
            case 2:
                return TypeATime();
            case 3:
                return UseTheMenuBar();
            case 4:
                return DragTheHead();
            case 5:
                return OpenTheListsMenu();
            default:
                return PressInTheList();
        }
    }

    /// What was sent since the last refresh went to the unit shown and to what was shown selected, and is what the
    /// gesture asks for.
    testing::AssertionResult SentOnly(const Asked& asked, const std::set<int>& selected, int current) {
        for (const auto& call : FakeZorvic::Calls()) {
            if (call.Operation.starts_with("Get") || call.Operation == "ReadAssetMetadata") continue;
            const bool isMeant = call.Operation == "SelectPreset" ? call.PK == Current()
                                 : asked.OnAllSelected            ? selected.count(call.PK) != 0
                                                                  : call.PK == current;
            if (!asked.Operations.count(call.Operation) || !isMeant) {
                return testing::AssertionFailure() << call.ToString() << " with " << current << " shown selected";
            }
        }
        return testing::AssertionSuccess();
    }

    MainWindow Window;
    ZorvicView* Shown = nullptr;
    std::mt19937 Random;
};

TEST_F(GesturesTest, NothingIsSentThatNobodyAskedFor) {
    const unsigned seed = FromEnvironment("ZORVIC_SEED", std::random_device{}());
    const unsigned count = FromEnvironment("ZORVIC_GESTURES", 400);
    SCOPED_TRACE("ZORVIC_SEED=" + std::to_string(seed));
    Random.seed(seed);
    Preset(1).Countdowns[1].ID = 1;
    {
        const std::unique_ptr<SessionHandle> handle(Sessions.CreateSessionByIP("host"));
        Shown = Window.AddView(handle->GetSession());
    }
    for (auto* timer : Shown->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly))
        timer->stop();
    Window.resize(1280, 720);
    Window.show();
    QApplication::setActiveWindow(&Window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&Window));
    for (unsigned gesture = 0; gesture < count && !HasFailure(); ++gesture) {
        Refresh();
        const auto selected = Selected();
        const int current = Current();
        const auto asked = MakeAGesture();
        EXPECT_TRUE(SentOnly(asked, selected, current)) << "gesture " << gesture;
        if (Below(3) == 0) ChangeTheUnit();
    }
}

}  // namespace
