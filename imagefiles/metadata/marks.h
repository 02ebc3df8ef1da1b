#pragma once

#include <string_view>

namespace tessarine::marks {

// What a block of metadata begins with where JPEG segments hold it. PNG texts hold blocks under
// the same names where other programs wrote them so.
using namespace std::string_view_literals;

inline constexpr auto exif = "Exif\0\0"sv;
inline constexpr auto xmp = "http://ns.adobe.com/xap/1.0/\0"sv;
/// Some writers put a blank before the end.
inline constexpr auto oddXmp = "http://ns.adobe.com/xap/1.0/ \0"sv;
inline constexpr auto moreXmp = "http://ns.adobe.com/xmp/extension/\0"sv;
inline constexpr auto resources = "Photoshop 3.0\0"sv;
inline constexpr auto profile = "ICC_PROFILE\0"sv;

}  // namespace tessarine::marks
