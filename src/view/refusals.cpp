#include "view/refusals.h"

#include "text/beyondinterface.h"
#include "text/refusaltext.h"

#include <QAccessible>
#include <QLabel>
#include <QTimer>

#include <chrono>

namespace {

/// Long enough to look up from the stage and read it.
constexpr std::chrono::seconds ShownFor(6);

}  // namespace

Refusals::Refusals(QLabel* label) : Label(label), Shown(new QTimer(label)) {
    Label->hide();
    Shown->setSingleShot(true);
    Shown->setInterval(ShownFor);
    QObject::connect(Shown, &QTimer::timeout, Label, &QLabel::hide);
}

void Refusals::Report(const QString& what, const Zorvic::Session* session, Zorvic::StatusCode status) {
    if (status == Zorvic::ZORVIC_STATUS_OK || !session) return;
    const QString text = RefusedText(what, status, LastReasonText(*session));
    Label->setText(text);
    Label->setToolTip(text);
    Label->show();
    Shown->start();
    QAccessibleEvent alert(Label, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}
