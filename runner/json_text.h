#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// Texts in files of JSON lines that have to come back as they were, whatever bytes they hold.

namespace tessarine {

/// A text as it is where it is UTF-8; else an object {"hex": "..."} of its bytes.
nlohmann::ordered_json jsonOfText(const std::string& text);
/// \throws nlohmann::json::exception where this is none of both
std::string textOfJson(const nlohmann::ordered_json& json);

/// An object on one line, without its end; in a text that did not go through jsonOfText() bytes
/// that are no UTF-8 become replacement characters.
std::string oneLine(const nlohmann::ordered_json& object);

}  // namespace tessarine
