// An operator who does anything at all, against a model of what each gesture asks for. The unit and other consoles
// change things in between. ZORVIC_GESTURES sets how many gestures are made, ZORVIC_SEED where they begin.

#include "fixtures.h"
#include "support/environment.h"

#include <QMenu>

#include <random>
#include <set>

using namespace Zorvic;

namespace {

struct GesturesTest : ViewTest {
    struct Asked {
        std::set<std::string> Operations;  ///< that the gesture may send
        bool OnAllSelected = false;        ///< to each selected preset; otherwise to the current one
    };

    int Below(int end) { return static_cast<int>(Random() % static_cast<unsigned>(end)); }
    template <typename T>
    T OneOf(std::initializer_list<T> choices) {
        return choices.begin()[Below(static_cast<int>(choices.size()))];
    }
    ~GesturesTest() override { static_cast<void>(View.release()); }  // the window's own
    int Current() const {
        const auto* row = View->GetSelectedPresetItem();
        return row ? row->text(1).toInt() : 0;
    }

    void Refresh() {
        // A unit does what it is told.
        for (const auto& call : FakeZorvic::Calls)
            if (call.Operation == "SelectPreset" && Unit.FindState(call.PK)) SelectOnUnit(call.PK);
        FakeZorvic::Calls.clear();
        Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_TIMECODE);
        for (const auto& command : Sent())
            EXPECT_TRUE(command.starts_with("UpdatePreset")) << command << " by a refresh";
    }
    void ChangeTheUnit() {
        const int pk = Unit.Presets[static_cast<std::size_t>(Below(static_cast<int>(Unit.Presets.size())))].PK;
        const auto play = [&] {
            Play(pk, Below(60000));
            State(pk).IsPaused = Below(2) == 0;
        };
        const auto stop = [&] {
            State(pk).IsPlaying = State(pk).IsPaused = false;
            Unit.TimeCodes.erase(pk);
        };
        const auto forget = [&] {
            if (Unit.Presets.size() > 3) Forget(pk);
        };
        OneOf<std::function<void()>>({stop, play, forget, [&] { SelectOnUnit(pk); },
                                      [&] { AddPreset("Another", 60000); },
                                      [&] { Preset(pk).TabDisplayOrder[0].Index = Below(20); }})();
        Refresh();
    }

    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(Window.windowHandle(), key, modifiers);
    }
    Qt::KeyboardModifiers AnyModifier() {
        return OneOf({Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier});
    }
    Asked PressInTheList() {
        List().setFocus();
        const auto key = OneOf({Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home,
                                Qt::Key_End, Qt::Key_PageDown, Qt::Key_F, Qt::Key_A});
        const bool acts = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape;
        Key(key, acts ? Qt::NoModifier : key == Qt::Key_A ? Qt::ControlModifier : AnyModifier());
        if (!acts) return {{"SelectPreset"}};
        if (key == Qt::Key_Escape) return {{"End"}, true};
        return {{"Take", "Pause"}, true};
    }
    Asked ClickARow() {
        auto* const row = List().topLevelItem(Below(List().topLevelItemCount()));
        QTest::mouseClick(List().viewport(), Qt::LeftButton, AnyModifier(), List().visualItemRect(row).center());
        return {{"SelectPreset"}};
    }
    Asked ClickAButton() {
        const auto [name, asked] = OneOf<std::pair<const char*, Asked>>({{"TakeButton", {{"Take"}, true}},
                                                                         {"PauseButton", {{"Pause"}, true}},
                                                                         {"EndButton", {{"End"}, true}},
                                                                         {"Goto10Button", {{"SeekTo"}, true}},
                                                                         {"InPointButton", {{"UpdatePreset"}}},
                                                                         {"GotosNewButton", {{"CreateGoto"}}},
                                                                         {"CDDeleteButton", {{"DeleteCountdown"}}}});
        View->findChild<QPushButton*>(QString::fromLatin1(name))->click();
        return asked;
    }
    Asked TypeATime() {
        View->SeekBox->setFocus();
        QTest::keyClicks(View->SeekBox, QStringLiteral("20"));
        if (Below(3) == 0) ChangeTheUnit();
        switch (Below(4)) {
            case 0:
                Key(Qt::Key_Return);
                return {{"SeekTo"}};
            case 1:
                Key(Qt::Key_Escape);
                return {};
            case 2:
                View->TakeButton->setFocus();
                return {};
            default:
                return UseTheMenuBar();
        }
    }
    Asked UseTheMenuBar() {
        if (Below(2) == 0) {
            QTest::mouseClick(Window.menuBar(), Qt::LeftButton, {}, {10, 10});
        } else {
            Window.menuBar()->setFocus(OneOf({Qt::MenuBarFocusReason, Qt::OtherFocusReason}));
            Key(OneOf({Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}));
        }
        while (auto* const menu = QApplication::activePopupWidget())
            menu->close();
        List().setFocus();
        return {};
    }
    Asked DragTheHead() {
        const int room = Bar().width() - 32;
        const auto at = [&] { return QPoint(16 + Below(room), 30); };
        const auto head =
            static_cast<std::int64_t>(Bar().GetTRT() - Bar().GetHead()) * room / std::max(1, Bar().GetTRT());
        QTest::mousePress(&Bar(), Qt::LeftButton, {}, Below(2) == 0 ? at() : QPoint(16 + static_cast<int>(head), 30));
        const int before = Current();
        EXPECT_TRUE(SentOnly({{"SeekTo"}}, {before}, before));
        if (Below(2) == 0) ChangeTheUnit();
        QTest::mouseMove(&Bar(), at());
        QTest::mouseRelease(&Bar(), Qt::LeftButton, {}, at());
        return Current() == before ? Asked{{"SeekTo"}} : Asked{};
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

    /// What was sent since the last refresh went to the unit shown and to what was shown selected, and is what the
    /// gesture asks for.
    testing::AssertionResult SentOnly(const Asked& asked, const std::set<int>& selected, int current) {
        for (const auto& call : FakeZorvic::Calls) {
            if (call.Operation.starts_with("Get") || call.Operation == "ReadAssetMetadata") continue;
            const bool isMeant = call.Operation == "SelectPreset" ? call.PK == Current()
                                 : asked.OnAllSelected            ? selected.contains(call.PK)
                                                                  : call.PK == current;
            if (!isMeant || !asked.Operations.contains(call.Operation))
                return testing::AssertionFailure() << call.ToString() << " with " << current << " shown selected";
        }
        return testing::AssertionSuccess();
    }

    MainWindow Window;
    std::mt19937 Random;
};

TEST_F(GesturesTest, NothingIsSentThatNobodyAskedFor) {
    const unsigned seed = FromEnvironment("ZORVIC_SEED", std::random_device{}());
    const unsigned count = FromEnvironment("ZORVIC_GESTURES", 400);
    SCOPED_TRACE("ZORVIC_SEED=" + std::to_string(seed));
    Random.seed(seed);
    Preset(1).Countdowns[1].ID = 1;
    View.reset(Window.AddView(std::unique_ptr<SessionHandle>(Sessions.CreateSessionByIP("host"))->GetSession()));
    Show(Window);
    for (unsigned gesture = 0; gesture < count && !HasFailure(); ++gesture) {
        Refresh();
        std::set<int> selected;
        for (const auto* row : List().selectedItems())
            selected.insert(row->text(1).toInt());
        const int current = Current();
        using Self = GesturesTest;
        const auto make =
            OneOf({&Self::ClickARow, &Self::ClickAButton, &Self::TypeATime, &Self::UseTheMenuBar, &Self::DragTheHead,
                   &Self::OpenTheListsMenu, &Self::PressInTheList, &Self::PressInTheList});
        EXPECT_TRUE(SentOnly((this->*make)(), selected, current)) << "gesture " << gesture;
        if (Below(3) == 0) ChangeTheUnit();
    }
}

}  // namespace
