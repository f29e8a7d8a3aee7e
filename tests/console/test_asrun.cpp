#include "asrun/asrunmodel.h"
#include "asrun/asrunwindow.h"
#include "fixtures.h"
#include "mainwindow.h"

#include <QClipboard>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>

#include <numeric>

namespace {

Zorvic::AsRunEntry Entry(std::uint64_t number, const std::string& preset = "Opener") {
    Zorvic::AsRunEntry entry;
    entry.Number = number;
    entry.Kind = Zorvic::ZORVIC_ASRUN_TAKE;
    entry.PK = 3;
    entry.Preset = preset;
    entry.Address = "192.0.2.1:5";
    return entry;
}

class AsRunTest : public UnitTest {
protected:
    AsRunTest() : Window(new AsRunWindow("host", QStringLiteral("Stage"))) { Window->show(); }
    ~AsRunTest() override { delete Window; }
    void Tell(std::uint64_t first, std::uint64_t last) {
        for (std::uint64_t number = first; number <= last; ++number)
            Unit.AsRun.push_back(Entry(number));
        Window->Refresh();
    }
    QString Cell(int row, int column) const {
        return Window->EntriesView->model()->index(row, column).data().toString();
    }
    int Rows() const { return Window->EntriesView->model()->rowCount(); }
    QScrollBar& Bar() const { return *Window->EntriesView->verticalScrollBar(); }

    QPointer<AsRunWindow> Window;
};

TEST_F(AsRunTest, FollowsAtTheEndAndStaysWhereTheOperatorScrolledTo) {
    Tell(1, 200);
    EXPECT_EQ(Bar().value(), Bar().maximum());
    Tell(201, 300);
    EXPECT_EQ(Bar().value(), Bar().maximum());
    Bar().setValue(50);
    Tell(301, 400);
    EXPECT_EQ(Bar().value(), 50);
    EXPECT_EQ(Rows(), 400);
    Unit.AsRunAnew = true;
    Tell(1, 2);
    EXPECT_EQ(Rows(), 2) << "another sheet";
}

TEST_F(AsRunTest, AnEntryThatComesAgainTakesItsOwnPlaceAndALateOneItsTurn) {
    Tell(2, 4);
    auto later = Entry(3);
    later.Shown = Zorvic::ZORVIC_SHOWN_NOT;
    Unit.AsRun = {later, Entry(1), Entry(5)};
    Window->Refresh();
    EXPECT_EQ(Rows(), 5);
    EXPECT_EQ(Cell(2, AsRunModel::SHOWN), QStringLiteral("not shown"));
}

TEST_F(AsRunTest, OfTooManyTheOldestGoUnlessTheOperatorReadsThem) {
    Tell(1, 10);
    EXPECT_EQ(Bar().value(), Bar().maximum());
    Tell(11, AsRunModel::MostRows + 10);
    EXPECT_EQ(Rows(), AsRunModel::MostRows);
    Bar().setValue(0);
    Tell(AsRunModel::MostRows + 11, AsRunModel::MostRows + 12);
    EXPECT_EQ(Rows(), AsRunModel::MostRows + 2);
}

TEST_F(AsRunTest, CopiesAndSavesWhatTheFilterShows) {
    Unit.AsRun = {Entry(1), Entry(2, "=Break"), Entry(3, "Break two")};
    Window->Refresh();
    QTest::keyClicks(Window->FilterEdit, QStringLiteral("take BREAK"));
    QTest::qWait(300);  // the button that clears the field fades in; one that is cut short is never freed
    EXPECT_EQ(Rows(), 2);
    EXPECT_EQ(Window->StateLabel->text(), QStringLiteral("Live - 2 of 3 entries"));
    EXPECT_FALSE(Window->CopyButton->isEnabled());
    QTest::keyClick(Window->EntriesView, Qt::Key_C, Qt::ControlModifier);  // with nothing to copy
    Window->EntriesView->selectAll();
    QApplication::setActiveWindow(Window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(Window));
    Window->EntriesView->setFocus();
    QTest::keyClick(Window->EntriesView, Qt::Key_C, Qt::ControlModifier);
    const QStringList lines = QApplication::clipboard()->text().split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0].split(QLatin1Char('\t')).size(), AsRunModel::COLUMN_COUNT);
    const QTemporaryDir directory;
    EXPECT_TRUE(Window->SaveTo(directory.filePath(QStringLiteral("a.csv"))));
    QFile file(directory.filePath(QStringLiteral("a.csv")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray saved = file.readAll();
    EXPECT_EQ(saved.count("\r\n"), 3);
    EXPECT_TRUE(saved.contains(",take,3,'=Break,"));
    EXPECT_FALSE(Window->SaveTo(QStringLiteral("/nowhere/a.csv")));
    EXPECT_TRUE(Window->StateLabel->text().contains(QStringLiteral("Not saved as /nowhere/a.csv: ")));
}

TEST_F(AsRunTest, EachUnitHasOneWindowAndSaysWhenThereIsNoSheet) {
    delete Window;
    Unit.AsRunState = Zorvic::AsRunSheet::State::Missing;
    MainWindow shell;
    auto* const item = shell.findChild<QAction*>(QStringLiteral("AsRunMenuItem"));
    EXPECT_FALSE(item->isEnabled()) << "without a tab";
    shell.AddView(FindSession("guid")->GetSession());
    item->trigger();
    Window = TopLevel<AsRunWindow>();
    ASSERT_TRUE(Window);
    EXPECT_EQ(Window->StateLabel->text(), QStringLiteral("no sheet here - 0 entries"));
    Window->hide();
    item->trigger();
    EXPECT_TRUE(Window->isVisible());
    Window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(Window);
    item->trigger();
    EXPECT_TRUE(TopLevel<AsRunWindow>());
}

}  // namespace
