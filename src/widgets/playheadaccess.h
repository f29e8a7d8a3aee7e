#pragma once

#include <QAccessibleWidget>

class PlayHeadWidget;

/// The scrub bar for who does not see it: a slider over the running time, in ms, that says what is left to the out
/// point as the time field does.
class PlayHeadAccess : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    /// For QAccessible::installFactory.
    static QAccessibleInterface* Make(const QString& className, QObject* object);

    explicit PlayHeadAccess(PlayHeadWidget& bar);

    QString text(QAccessible::Text what) const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QVariant currentValue() const override;
    /// Seeks, but only where a click would.
    void setCurrentValue(const QVariant& value) override;
    QVariant maximumValue() const override;
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override;

private:
    PlayHeadWidget& Bar;
};
