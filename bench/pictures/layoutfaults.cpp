#include "layoutfaults.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QScreen>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeView>

namespace {

QString NameOf(const QWidget& widget) {
    const QString name =
        widget.objectName().isEmpty() ? QString::fromLatin1(widget.metaObject()->className()) : widget.objectName();
    const QWidget* const window = widget.window();
    return QString::fromLatin1(window->metaObject()->className()) + QLatin1Char('/') + name;
}

bool IsLabelCut(const QLabel& label) {
    if (label.text().isEmpty() || label.sizePolicy().horizontalPolicy() == QSizePolicy::Ignored) return false;
    if (label.wordWrap()) return label.heightForWidth(label.width()) > label.height();
    const QSize wanted = label.minimumSizeHint();
    return wanted.width() > label.width() || wanted.height() > label.height();
}

bool IsHeaderCut(const QHeaderView& header) {
    if (header.orientation() == Qt::Vertical) return false;
    for (int section = 0; section < header.count(); ++section) {
        if (header.sectionSizeHint(section) > header.sectionSize(section)) return true;
    }
    return false;
}

bool IsCut(const QWidget& widget) {
    if (const auto* const label = qobject_cast<const QLabel*>(&widget)) return IsLabelCut(*label);
    if (const auto* const header = qobject_cast<const QHeaderView*>(&widget)) return IsHeaderCut(*header);
    const auto* const button = qobject_cast<const QAbstractButton*>(&widget);
    const bool iconOnly = button && button->text().isEmpty();
    if ((!button || iconOnly) && !qobject_cast<const QComboBox*>(&widget)) return false;
    // Rounding the frame of a style sheet may ask for one pixel more than it draws.
    const QSize wanted = widget.minimumSizeHint() - QSize(1, 1);
    return wanted.width() > widget.width() || wanted.height() > widget.height();
}

/// Contents that are larger than what shows them, on purpose or by their toolkit's own design.
bool ScrollsOrStacks(const QWidget& parent) {
    return qobject_cast<const QAbstractScrollArea*>(parent.parentWidget()) ||
           qobject_cast<const QAbstractScrollArea*>(&parent) || qobject_cast<const QTabWidget*>(&parent) ||
           qobject_cast<const QTabBar*>(&parent) || qobject_cast<const QHeaderView*>(&parent);
}

void LookBelow(const QWidget& parent, QStringList& faults) {
    const bool placed = !ScrollsOrStacks(parent);
    QList<const QWidget*> before;
    for (const auto* const child : parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!child->isVisible() || child->isWindow()) continue;
        if (IsCut(*child)) faults << NameOf(*child) + QStringLiteral(" is cut off");
        // What has nothing to show yet has no size: it may stand at the very edge.
        if (placed && !child->size().isEmpty() && !parent.rect().contains(child->geometry()))
            faults << NameOf(*child) + QStringLiteral(" sticks out of ") + NameOf(parent);
        for (const auto* const other : before)
            if (placed && other->geometry().intersects(child->geometry()))
                faults << NameOf(*child) + QStringLiteral(" lies over ") + NameOf(*other);
        before << child;
        LookBelow(*child, faults);
    }
}

}  // namespace

QStringList LayoutFaults() {
    QStringList faults;
    for (const auto* const window : QApplication::topLevelWidgets()) {
        const bool isWindow = window->windowType() == Qt::Window || window->windowType() == Qt::Dialog;
        if (!window->isVisible() || !isWindow) continue;
        const QSize screen = window->screen()->availableSize();
        if (window->width() > screen.width() || window->height() > screen.height())
            faults << NameOf(*window) + QStringLiteral(" is larger than the screen");
        LookBelow(*window, faults);
    }
    return faults;
}
