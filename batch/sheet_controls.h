#pragma once

#include <string>
#include <string_view>

#include "batch/platform.h"

// What the files of the sheet share.

namespace tessarine {

/// The name of a member of a control array: "Col(1)".
inline std::string indexed(std::string_view array, int index) {
    return std::string(array) + "(" + std::to_string(index) + ")";
}

/// Gives a control's member a value and tells the screen, if that brings a change.
template <class Member, class Value>
void setControl(Platform& platform, Member& member, const Value& value, std::string_view control) {
    if (member == value) return;
    member = value;
    platform.changed(control);
}

/// Whether a control array of this length has this index. An operation on a control that is not
/// there does nothing.
template <class Array>
bool hasIndex(const Array& array, int index) {
    return index >= 0 && static_cast<size_t>(index) < array.size();
}

/// Makes box `index` of an array the only one that is chosen.
template <class Array>
void chooseOnly(Platform& platform, Array& boxes, int index, std::string_view array) {
    for (size_t i = 0; i < boxes.size(); ++i) {
        const int at = static_cast<int>(i);
        setControl(platform, boxes[i], at == index, indexed(array, at));
    }
}

}  // namespace tessarine
