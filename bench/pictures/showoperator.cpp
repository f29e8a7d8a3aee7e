#include "showoperator.h"

#include "playheadwidget.h"

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTabBar>
#include <QTimer>
#include <QTreeWidget>

namespace {

constexpr int NameColumn = 2;

}  // namespace

ShowOperator::ShowOperator(Camera& camera) : Pictures(camera) {
    Window.showMaximized();
    Becomes([this] { return Window.isActiveWindow(); });
}

QTabWidget& ShowOperator::Tabs() const {
    return *Window.findChild<QTabWidget*>(QStringLiteral("ZorvicTabs"));
}

PlayHeadWidget& ShowOperator::ScrubBar() const {
    return *Tabs().currentWidget()->findChild<PlayHeadWidget*>();
}

void ShowOperator::Connect(const std::string& host) {
    Chooser.show();
    Chooser.findChild<QLineEdit*>(QStringLiteral("ZorvicIPBox"))->setText(QString::fromStdString(host));
    QTest::mouseClick(Chooser.findChild<QPushButton*>(QStringLiteral("ConnectButton")), Qt::LeftButton);
    Window.activateWindow();
    Becomes([this] { return Window.isActiveWindow(); });
}

void ShowOperator::Press(const char* button) const {
    QTest::mouseClick(&Find<QPushButton>(button), Qt::LeftButton);
    QTest::qWait(300);
}

void ShowOperator::Key(int key) const {
    QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
    QTest::qWait(100);
}

QRect ShowOperator::RowOf(const char* preset) const {
    auto& list = Find<QTreeWidget>("PresetsView");
    const auto found = list.findItems(QString::fromUtf8(preset), Qt::MatchExactly, NameColumn);
    if (found.isEmpty()) return {};
    list.scrollToItem(found.first());  // a small screen shows a few rows only
    return list.visualItemRect(found.first());
}

void ShowOperator::Select(const char* preset, Qt::KeyboardModifiers modifiers) const {
    auto* const viewport = Find<QTreeWidget>("PresetsView").viewport();
    const QRect row = RowOf(preset);
    QTest::mouseClick(viewport, Qt::LeftButton, modifiers, {viewport->width() / 3, row.center().y()});
    PointAway();
    QTest::qWait(400);
}

void ShowOperator::Point(const QWidget& widget, QPoint at) const {
    QCursor::setPos(widget.mapToGlobal(at));
    QTest::qWait(200);
}

void ShowOperator::PointAway() const {
    // The scrub bar keeps the time under the pointer until it is off the bar, but still above the widget.
    if (Tabs().count() > 0) Point(ScrubBar(), {1, 1});
    QCursor::setPos(Window.screen()->geometry().bottomRight());
}

void ShowOperator::Seek(const char* time) const {
    auto& box = Find<QLineEdit>("SeekBox");
    box.setFocus();
    box.selectAll();
    QTest::keyClicks(&box, QString::fromLatin1(time));
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::qWait(300);
}

void ShowOperator::ShowMarks(const char* tab) const {
    auto& tabs = Find<QTabWidget>("GCTabs");
    tabs.setCurrentWidget(&Find(tab));
}

void ShowOperator::PictureOfMenu(const char* name, const QWidget& window, const std::function<void()>& open) const {
    QTimer::singleShot(300, &window, [&] {
        Picture(name, window);
        if (auto* const popup = QApplication::activePopupWidget()) popup->close();
    });
    open();
    Becomes([] { return !QApplication::activePopupWidget(); });
    QTest::qWait(500);
}
