#pragma once

#include <cstdint>

#include <QAccessible>

namespace tessarine {

/// A control with an integer value that a screen reader may read and set. A QWidget that also
/// derives from this is shown to screen readers so, once installAccessibleRanges() has run.
class AccessibleRange {
  public:
    virtual ~AccessibleRange() = default;
    virtual QAccessible::Role accessibleRole() const = 0;
    virtual int32_t accessibleValue() const = 0;
    virtual int32_t accessibleMinimum() const = 0;
    virtual int32_t accessibleMaximum() const = 0;
    /// \param value  between minimum and maximum
    virtual void setAccessibleValue(int32_t value) = 0;
};

/// Tells Qt about the controls above. Later calls do nothing.
void installAccessibleRanges();

/// Says that the value of a control changed.
/// \param control  a QWidget that derives from AccessibleRange
void announceValue(QObject* control, int32_t value);

}  // namespace tessarine
