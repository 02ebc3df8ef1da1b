#include "widgets/accessible_range.h"

#include <algorithm>

#include <QAccessibleWidget>
#include <QWidget>

namespace tessarine {

namespace {

class RangeInterface : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    RangeInterface(QWidget* widget, AccessibleRange& range)
        : QAccessibleWidget(widget, range.accessibleRole()), range_(range) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value) return QString::number(range_.accessibleValue());
        return QAccessibleWidget::text(kind);
    }

    QVariant currentValue() const override { return range_.accessibleValue(); }
    QVariant minimumValue() const override { return range_.accessibleMinimum(); }
    QVariant maximumValue() const override { return range_.accessibleMaximum(); }
    QVariant minimumStepSize() const override { return 1; }
    void setCurrentValue(const QVariant& value) override {
        const int32_t low = range_.accessibleMinimum();
        const int32_t high = std::max(low, range_.accessibleMaximum());
        range_.setAccessibleValue(std::clamp(value.toInt(), low, high));
    }

  private:
    AccessibleRange& range_;
};

QAccessibleInterface* rangeInterface(const QString&, QObject* object) {
    auto* range = dynamic_cast<AccessibleRange*>(object);
    auto* widget = qobject_cast<QWidget*>(object);
    return range && widget ? new RangeInterface(widget, *range) : nullptr;
}

}  // namespace

void installAccessibleRanges() {
    // Qt forgets its factories with its application, and takes each of them once.
    QAccessible::installFactory(rangeInterface);
}

void announceValue(QObject* control, int32_t value) {
    QAccessibleValueChangeEvent event(control, value);
    QAccessible::updateAccessibility(&event);
}

}  // namespace tessarine
