#pragma once

#include <cstdint>

#include "pixels/failures.h"

namespace tessarine {

/// Item `index` (from 0) of a list that may have changed meanwhile.
/// \throws StatementFailed where there is none
template <class Items>
auto& itemAt(Items& items, int64_t index) {
    if (index < 0 || index >= static_cast<int64_t>(items.size()))
        throw StatementFailed("the list has no such item");
    return items[static_cast<size_t>(index)];
}

}  // namespace tessarine
