#include "view/lostlink.h"

#include <QApplication>
#include <QCoreApplication>
#include <QLabel>

#include <algorithm>
#include <utility>

LostLink::LostLink(QLabel* label, std::vector<QWidget*> panels) : Label(label), Panels(std::move(panels)) {
    LastAnswer.start();
    Label->setTextFormat(Qt::PlainText);
    Label->hide();
}

bool LostLink::Show(bool connected, const QString& problem) {
    if (connected) LastAnswer.restart();
    const bool changes = std::exchange(Lost, !connected) != Lost;
    if (changes) ShowPanels();
    Label->setVisible(Lost);
    if (Lost) {
        const auto seconds = LastAnswer.elapsed() / 1000;
        const QString silence = QCoreApplication::translate("ZorvicView", "No answer for %1 s").arg(seconds);
        Label->setText(problem.isEmpty() ? silence : silence + QStringLiteral(": ") + problem);
    }
    return changes;
}

/// A panel that is switched off gives the keyboard away, and would not get it back.
void LostLink::ShowPanels() {
    if (Lost) Focus = QApplication::focusWidget();
    for (auto* panel : Panels)
        panel->setEnabled(!Lost);
    const bool isOurs = std::any_of(Panels.begin(), Panels.end(),
                                    [this](const QWidget* panel) { return Focus && panel->isAncestorOf(Focus); });
    if (!Lost && isOurs && Focus->isVisible()) Focus->setFocus();
}
