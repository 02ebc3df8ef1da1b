#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

#include "pixels/failures.h"

// Texts in files of JSON lines that have to come back as they were, whatever bytes they hold.

namespace tessarine {

/// A text as it is where it is UTF-8; else an object {"hex": "..."} of its bytes.
nlohmann::ordered_json jsonOfText(const std::string& text);
/// \throws nlohmann::json::exception where this is none of both
std::string textOfJson(const nlohmann::ordered_json& json);

/// A whole number from a file. \throws StatementFailed where it is none, or does not fit
template <class Number>
Number numberOfJson(const nlohmann::ordered_json& json,
                    Number lowest = std::numeric_limits<Number>::min(),
                    Number highest = std::numeric_limits<Number>::max()) {
    const bool fits = json.is_number_unsigned()
                          ? std::cmp_greater_equal(json.get<uint64_t>(), lowest) &&
                                std::cmp_less_equal(json.get<uint64_t>(), highest)
                          : json.is_number_integer() &&
                                std::cmp_greater_equal(json.get<int64_t>(), lowest) &&
                                std::cmp_less_equal(json.get<int64_t>(), highest);
    if (!fits)
        throw StatementFailed("expected a number from " + std::to_string(lowest) + " to " +
                              std::to_string(highest));
    return json.get<Number>();
}

/// An object on one line, without its end; in a text that did not go through jsonOfText() bytes
/// that are no UTF-8 become replacement characters.
std::string oneLine(const nlohmann::ordered_json& object);

}  // namespace tessarine
