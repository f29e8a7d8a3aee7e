#include "widgets/playheadaccess.h"

#include "playheadwidget.h"
#include "text/timetext.h"

PlayHeadAccess::PlayHeadAccess(PlayHeadWidget& bar) : QAccessibleWidget(&bar, QAccessible::Slider), Bar(bar) {}

QAccessibleInterface* PlayHeadAccess::Make(const QString& /*className*/, QObject* object) {
    auto* const bar = qobject_cast<PlayHeadWidget*>(object);
    return bar ? new PlayHeadAccess(*bar) : nullptr;
}

QString PlayHeadAccess::text(QAccessible::Text what) const {
    if (what == QAccessible::Name) return PlayHeadWidget::tr("Play position");
    if (what != QAccessible::Value) return QAccessibleWidget::text(what);
    const int out = Bar.GetTrimEnd();
    const QString trim = PlayHeadWidget::tr("from %1 to %2")
                             .arg(ClockText(WrapSubtract(Bar.GetTrimStart(), out)), ClockText(WrapSubtract(out, out)));
    if (!Bar.ShowsPlayHead()) return trim;
    const QString left = ClockText(WrapSubtract(Bar.GetHead(), out));
    return (Bar.IsCued() ? PlayHeadWidget::tr("cued at %1, %2") : PlayHeadWidget::tr("%1 left, %2")).arg(left, trim);
}

void* PlayHeadAccess::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QVariant PlayHeadAccess::currentValue() const {
    return WrapSubtract(Bar.GetTRT(), Bar.GetHead());
}

void PlayHeadAccess::setCurrentValue(const QVariant& value) {
    Bar.SeekTo(value.toInt());
}

QVariant PlayHeadAccess::maximumValue() const {
    return Bar.GetTRT();
}

QVariant PlayHeadAccess::minimumStepSize() const {
    return PlayHeadWidget::StepMS;
}
