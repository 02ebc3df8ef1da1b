#include "imagefiles/wmf_fonts.h"

#include <fontconfig/fontconfig.h>
#include <memory>

#include <libwmf/font.h>
#include <libwmf/macro.h>

namespace tessarine {

namespace {

/// The library hands no data of ours to the function that chooses fonts.
thread_local WmfFonts* current = nullptr;

struct DestroyPattern {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};

/// Weights of metafiles go from 100 to 900, of which 400 is normal and 700 bold.
int systemWeight(int weight) {
    return weight == 0 ? FC_WEIGHT_NORMAL : FcWeightFromOpenType(weight);
}

}  // namespace

WmfFonts::WmfFonts(wmfAPI* api) {
    if (FT_Init_FreeType(&library_) != 0) library_ = nullptr;
    current = this;
    wmf_ipa_font_map_set(api, &WmfFonts::choose);
}

WmfFonts::~WmfFonts() {
    current = nullptr;
    for (const auto& [name, face] : faces_)
        FT_Done_Face(face);
    if (library_ != nullptr) FT_Done_FreeType(library_);
}

void WmfFonts::choose(wmfAPI* api, wmfFont* font) {
    if (font == nullptr || font->user_data != nullptr) return;
    const char* name = WMF_FONT_NAME(font);
    FT_Face face = current->faceFor(name != nullptr ? name : "", WMF_FONT_WEIGHT(font),
                                    WMF_FONT_ITALIC(font) != 0);
    if (face == nullptr) return;
    auto* chosen = static_cast<wmfIPAFont*>(wmf_malloc(api, sizeof(wmfIPAFont)));
    if (chosen == nullptr) return;
    chosen->ps_name = nullptr;
    chosen->ft_face = face;
    font->user_data = chosen;
}

FT_Face WmfFonts::faceFor(const std::string& name, int weight, bool italic) {
    if (library_ == nullptr) return nullptr;
    const std::unique_ptr<FcPattern, DestroyPattern> wanted(FcPatternCreate());
    FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(name.c_str()));
    FcPatternAddInteger(wanted.get(), FC_WEIGHT, systemWeight(weight));
    FcPatternAddInteger(wanted.get(), FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(wanted.get(), FC_SCALABLE, FcTrue);
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    const std::unique_ptr<FcPattern, DestroyPattern> match(
        FcFontMatch(nullptr, wanted.get(), &result));
    FcChar8* file = nullptr;
    int number = 0;
    if (!match || FcPatternGetString(match.get(), FC_FILE, 0, &file) != FcResultMatch)
        return nullptr;
    FcPatternGetInteger(match.get(), FC_INDEX, 0, &number);
    const std::string path = reinterpret_cast<const char*>(file);
    const std::string key = path + ':' + std::to_string(number);
    if (const auto known = faces_.find(key); known != faces_.end()) return known->second;
    FT_Face face = nullptr;
    if (FT_New_Face(library_, path.c_str(), number, &face) != 0) return nullptr;
    faces_[key] = face;
    return face;
}

}  // namespace tessarine
