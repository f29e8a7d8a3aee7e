#pragma once

#include <QElapsedTimer>
#include <QPointer>

#include <vector>

class QLabel;
class QWidget;

/// What tells a dead picture of a unit from a live one: controls that do nothing, and how long the unit has been
/// silent.
class LostLink {
public:
    LostLink(QLabel* label, std::vector<QWidget*> panels);

    /// Called a few times a second. True when the link has just gone or come back.
    /// The problem is what is known about why there is no link.
    bool Show(bool connected, const QString& problem = {});
    bool IsLost() const { return Lost; }

private:
    void ShowPanels();

    QLabel* Label;
    std::vector<QWidget*> Panels;
    QElapsedTimer LastAnswer;
    bool Lost = false;
    QPointer<QWidget> Focus;  ///< had the keyboard when the link went
};
