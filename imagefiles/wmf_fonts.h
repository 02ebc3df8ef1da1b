#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H

#include <map>
#include <string>

#include <libwmf/api.h>
#include <libwmf/ipa.h>

namespace tessarine {

/// The fonts of one drawing, as the system chooses them for the names that the metafile asks for.
/// By itself the drawing library knows one package of fonts, and draws nothing without it.
class WmfFonts {
  public:
    /// The drawing has to end before this does. One drawing a thread.
    explicit WmfFonts(wmfAPI* api);
    ~WmfFonts();
    WmfFonts(const WmfFonts&) = delete;
    WmfFonts& operator=(const WmfFonts&) = delete;

  private:
    static void choose(wmfAPI* api, wmfFont* font);
    FT_Face faceFor(const std::string& name, int weight, bool italic);

    FT_Library library_ = nullptr;
    std::map<std::string, FT_Face> faces_;  ///< by file and number in it
};

}  // namespace tessarine
