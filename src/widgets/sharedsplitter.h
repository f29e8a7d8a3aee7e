#pragma once

#include <QSplitter>

/// A splitter of two whose place is that of all its kind: where the operator leaves it in one tab, it is in the others,
/// and in those that are opened later, until the program ends.
class SharedSplitter : public QSplitter {
    Q_OBJECT

public:
    explicit SharedSplitter(QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
};
