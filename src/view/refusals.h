#pragma once

#include <zorvic/session.h>

class QLabel;
class QString;
class QTimer;

/// Says for some seconds, in a label of its own, what the unit did not do and why.
class Refusals {
public:
    explicit Refusals(QLabel* label);

    /// For each command that was sent; one that succeeded changes nothing. `what` is the command in the operator's
    /// words.
    void Report(const QString& what, const Zorvic::Session* session, Zorvic::StatusCode status);

private:
    QLabel* Label;
    QTimer* Shown;
};
