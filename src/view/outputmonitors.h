#pragma once

#include <zorvic/preview.h>

#include <QTimer>
#include <QWidget>

#include <memory>
#include <string>
#include <vector>

class OutputMonitor;

/// The monitors of a unit's outputs, in as many rows as let them be largest beside the layout panes. Takes no room for
/// a unit that has no pictures to give, and asks for none while it is not on the screen or the unit does not answer.
class OutputMonitors : public QWidget {
    Q_OBJECT

public:
    OutputMonitors(std::string host, QWidget* parent);
    ~OutputMonitors() override;

    void ShowLink(bool lost);
    /// Shows what has come; called by itself several times a second.
    void Refresh();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    /// Follows the width of the parent.
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void Watch();
    void TakeOutputs(const std::vector<Zorvic::OutputPicture>& pictures);
    void Arrange();

    const std::string Host;
    std::unique_ptr<Zorvic::OutputPreview> Preview;
    std::vector<std::unique_ptr<OutputMonitor>> Monitors;
    QTimer Round;
    bool OnScreen = false;
    bool Lost = false;
};
