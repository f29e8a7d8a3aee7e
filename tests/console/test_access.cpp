#include "aboutdialog.h"
#include "assetbrowser.h"
#include "assetsloadingdialog.h"
#include "comparewindow.h"
#include "fixtures.h"
#include "presetbuilder.h"
#include "shortcutsheet.h"

#ifdef ZORVIC_ASRUN
#include "asrun/asrunwindow.h"
#endif

#include <QAccessible>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>

#include <set>

namespace {

/// A unit with a goto in its first preset.
class KeysTest : public ViewTest {
protected:
    KeysTest() {
        auto& mark = Preset(1).Gotos[4];
        mark.ID = 4;
        mark.TimeMS = 5000;
    }
    void Press(QWidget* widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
        widget->setFocus();
        QTest::keyClick(View->windowHandle(), key, modifiers);
    }
};

/// Every window of the console, the main one with a unit that has presets, marks and assets.
class AccessTest : public KeysTest {
protected:
    AccessTest() {
        AddAsset(Full);
        Preset(1).Canvases = {Canvas(Full, Zorvic::ZORVIC_ECALIGN_SCALED_CENTERED)};
        const std::unique_ptr<SessionHandle> handle(Sessions.CreateSessionByIP("host"));
        Tab = Main.AddView(handle->GetSession());
        Windows = {&Main, &Chooser, &About, &Compare, &Keys, &Loading};
#ifdef ZORVIC_ASRUN
        Windows.push_back(&Sheet);
#endif
        // The view's own: they have no parent.
        Tab->AssetImportButton->click();
        Tab->AddPresetButton->click();
        Windows.push_back(TopLevel<AssetBrowser>());
        Windows.push_back(TopLevel<PresetBuilder>());
        for (auto* window : Windows)
            window->show();
    }

    void Activate() {
        Main.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&Main));
        Tab->PresetsView->setFocus();
    }

    MainWindow Main;
    ZorvicChooser Chooser{&Main};
    AboutDialog About;
    CompareWindow Compare{{}};
    ShortcutSheet Keys;
    AssetsLoadingDialog Loading;
#ifdef ZORVIC_ASRUN
    AsRunWindow Sheet{"host", QStringLiteral("host")};
#endif
    ZorvicView* Tab = nullptr;
    std::vector<QWidget*> Windows;
};

/// Where in the tree of a window something is, for who has to mend it.
std::string Place(QAccessibleInterface* node) {
    std::string path;
    for (; node && node->object(); node = node->parent())
        path = std::string(node->object()->metaObject()->className()) + " " +
               node->object()->objectName().toStdString() + "/" + path;
    return path;
}

void FindNameless(QAccessibleInterface* node, std::vector<std::string>& nameless) {
    static const std::set<QAccessible::Role> controls = {
        QAccessible::PushButton, QAccessible::CheckBox,     QAccessible::Slider,     QAccessible::ComboBox,
        QAccessible::SpinBox,    QAccessible::EditableText, QAccessible::List,       QAccessible::Tree,
        QAccessible::Table,      QAccessible::PageTab,      QAccessible::ProgressBar};
    if (!node || node->state().invisible) return;
    const auto* const widget = qobject_cast<const QWidget*>(node->object());
    const bool takesKeys = widget && widget->focusPolicy() != Qt::NoFocus && !widget->focusProxy();
    if ((takesKeys || controls.contains(node->role())) && node->text(QAccessible::Name).trimmed().isEmpty())
        nameless.push_back(Place(node));
    // The list of a combo box goes by the name of the box.
    for (int child = 0; child < (node->role() == QAccessible::ComboBox ? 0 : node->childCount()); ++child)
        FindNameless(node->child(child), nameless);
}

/// The letters of a bar or menu while the keyboard is in it; a text without one counts as a space.
std::string Letters(const QWidget& menu) {
    std::string letters;
    for (const auto* const action : menu.actions()) {
        const auto letter = QKeySequence::mnemonic(action->text()).toString();
        if (!action->isSeparator()) letters += letter.isEmpty() ? ' ' : letter.back().toLatin1();
    }
    return letters;
}

bool AllDiffer(std::string letters) {
    std::ranges::sort(letters);
    return std::ranges::adjacent_find(letters) == letters.end() && letters.find(' ') == std::string::npos;
}

TEST_F(AccessTest, EveryControlOfEveryWindowHasANameForWhoDoesNotSeeIt) {
    std::vector<std::string> nameless;
    for (auto* const window : Windows)
        for (int tab = 0; tab < (window == &Main ? Tab->GCTabs->count() : 1); ++tab) {
            Tab->GCTabs->setCurrentIndex(tab);
            FindNameless(QAccessible::queryAccessibleInterface(window), nameless);
        }
    EXPECT_THAT(nameless, IsEmpty());
}

TEST_F(AccessTest, NoKeyHasTwoMeaningsInAWindowAndTheSheetNamesEveryOne) {
    QString sheet;
    for (QTreeWidgetItemIterator line(Keys.KeysView); *line; ++line)
        sheet += (*line)->text(0) + QLatin1Char('\n');
    for (auto* const window : Windows) {
        std::set<QString> keys;
        for (const auto* const shortcut : window->findChildren<QShortcut*>()) {
            const auto key = shortcut->key().toString();
            EXPECT_TRUE(keys.insert(key).second) << window->windowTitle().toStdString() << ": " << key.toStdString();
            EXPECT_TRUE(sheet.contains(key)) << key.toStdString();
        }
    }
}

TEST_F(AccessTest, MenusHaveLettersThatDifferWhileTheKeyboardIsInThem) {
    Activate();
    const auto titles = Letters(*Main.menuBar());
    EXPECT_EQ(titles, "    ") << "texts at rest are as given";
    auto* const handle = Main.windowHandle();
    QTest::keyPress(handle, Qt::Key_Alt);
    EXPECT_EQ(Letters(*Main.menuBar()), "FPTH");
    QTest::keyPress(handle, Qt::Key_T, Qt::AltModifier);
    EXPECT_TRUE(Main.ToolsMenu->isVisible());
    EXPECT_TRUE(AllDiffer(Letters(*Main.ToolsMenu))) << Letters(*Main.ToolsMenu);
    QTest::keyClick(Main.ToolsMenu, Qt::Key_Escape);
    QTest::keyRelease(handle, Qt::Key_Alt);
    Main.menuBar()->clearFocus();
    QTest::qWait(10);
    EXPECT_EQ(Letters(*Main.menuBar()), titles);
    for (auto* const menu : {Main.FileMenu, Main.PresetMenu, Main.HelpMenu}) {
        menu->popup({});
        QTest::keyClick(menu, Qt::Key_Down);
        EXPECT_TRUE(AllDiffer(Letters(*menu))) << Letters(*menu);
        menu->close();
    }
    EXPECT_EQ(Main.actionQuit->text(), QStringLiteral("Quit"));
}

TEST_F(AccessTest, TabReachesEveryControlOfTheLivePanelAndSendsNothing) {
    Activate();
    std::set<const QWidget*> missing;
    for (const auto* const widget : Tab->findChildren<QWidget*>()) {
        const bool takesTab = (widget->focusPolicy() & Qt::TabFocus) != 0 && !widget->focusProxy();
        if (takesTab && widget->isVisible() && widget->isEnabled()) missing.insert(widget);
    }
    EXPECT_TRUE(missing.contains(Tab->findChild<PlayHeadWidget*>()));
    FakeZorvic::Calls.clear();
    for (auto steps = 2 * missing.size(); steps > 0; --steps) {
        missing.erase(QApplication::focusWidget());
        QTest::keyClick(Main.windowHandle(), Qt::Key_Tab);
        missing.erase(QApplication::focusWidget());
    }
    for (const auto* const widget : missing)
        ADD_FAILURE() << widget->metaObject()->className() << " " << widget->objectName().toStdString();
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(KeysTest, PresetsMoveAndGotosJumpByKeysWhatTheOthersAreUsedForStays) {
    Open();
    Press(&List(), Qt::Key_Down, Qt::AltModifier);
    EXPECT_THAT(Column(&List(), 1), ElementsAre("2", "1", "3"));
    EXPECT_THAT(Sent(), ElementsAre("UpdatePreset 2", "UpdatePreset 1", "UpdatePreset 3"));
    EXPECT_EQ(View->GetSelectedPresetItem()->text(1), QStringLiteral("1"));
    Press(&List(), Qt::Key_Up, Qt::AltModifier);
    Sent();
    Press(&List(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_THAT(Sent(), IsEmpty()) << "at the end of the list";
    View->GCTabs->setCurrentWidget(View->GotoTab);
    View->GotosView->setCurrentItem(View->GotosView->topLevelItem(0));
    Press(View->GotosView, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_THAT(Sent(), ElementsAre("SeekTo 1 5000"));
    Press(View->GotosView, Qt::Key_Return);
    EXPECT_THAT(Sent(), ElementsAre("Take 1"));
    std::set<const QWidget*> panes;
    for (int press = 0; press < 6; ++press) {
        QTest::keyClick(View->windowHandle(), Qt::Key_F6);
        panes.insert(QApplication::focusWidget());
    }
    EXPECT_EQ(panes.size(), 6U);
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(KeysTest, TheScrubBarSaysWhereItStandsAndSeeksOnlyWhereAClickWould) {
    Play(1, 40000);
    Preset(1).InPosition = 50000;
    Preset(1).OutPosition = 10000;
    Open();
    Pump(Zorvic::ZORVIC_STATE_TIMECODE);
    auto* const bar = QAccessible::queryAccessibleInterface(&Bar());
    ASSERT_TRUE(bar && bar->valueInterface());
    EXPECT_EQ(bar->role(), QAccessible::Slider);
    EXPECT_EQ(bar->text(QAccessible::Value), QStringLiteral("00:00:30 left, from 00:00:40 to 00:00:00"));
    EXPECT_EQ(bar->valueInterface()->currentValue().toInt(), 20000);
    EXPECT_EQ(bar->valueInterface()->maximumValue().toInt(), 60000);
    bar->valueInterface()->setCurrentValue(5000);
    EXPECT_THAT(Sent(), IsEmpty()) << "before the in point";
    bar->valueInterface()->setCurrentValue(30000);
    EXPECT_THAT(Sent(), ElementsAre("SeekTo 1 30000"));
}

}  // namespace
