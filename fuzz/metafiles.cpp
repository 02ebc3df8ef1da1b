#include <optional>
#include <vector>

#include <emf2svg.h>
#include <libwmf/api.h>
#include <libwmf/font.h>
#include <libwmf/gd.h>

#include "expect.h"
#include "imagefiles/decoders.h"
#include "input.h"
#include "pixels/failures.h"

using namespace tessarine;

// What the program itself does with a metafile: it reads the headers, judges the size, chooses the
// fonts, frames the drawing and takes the pixels over. The libraries that read the records, libwmf
// and libemf2svg, are left out: where they break is not for this program to mend, which reads its
// pictures in a process that may die. Stand-ins answer in their place, and say and draw whatever
// the input tells them, as the libraries might. librsvg, cairo and the system's fonts are the real
// ones, but they are shown one simple drawing, or one that is no drawing: librsvg ends the process
// over texts of a size that no font can have, for which some records ask.

namespace {

constexpr int32_t longestDrawn = 200;  // pixels; larger pictures are refused by the stand-ins

/// What the stand-ins answer by.
Input* answers = nullptr;
wmfMap chooseFont = nullptr;

struct StandIn {
    wmfAPI api{};
    wmf_gd_t canvas{};
    std::vector<int> pixels;
    std::vector<void*> blocks;
};

StandIn& standInOf(wmfAPI* api) { return *static_cast<StandIn*>(api->user_data); }

wmf_error_t anyStatus() { return answers->below(16) == 15 ? wmf_E_BadFormat : wmf_E_None; }

void askForFont(wmfAPI* api) {
    std::string name = textOf(answers->take(answers->u8() % 40));
    wmfFont font{};
    font.lfFaceName = answers->below(16) == 15 ? nullptr : name.data();
    font.lfWeight = static_cast<U16>(answers->i16());
    font.lfItalic = answers->u8();
    chooseFont(api, &font);
    if (font.user_data == nullptr) return;
    const auto* chosen = static_cast<const wmfIPAFont*>(font.user_data);
    expect(chosen->ft_face != nullptr && chosen->ft_face->num_glyphs > 0);
    chooseFont(api, &font);  // the library asks again, and what is chosen stays
    expect(font.user_data == chosen);
}

}  // namespace

extern "C" {

wmf_error_t wmf_api_create(wmfAPI** api, unsigned long, wmfAPI_Options*) {
    auto* standIn = new StandIn;
    standIn->api.user_data = standIn;
    standIn->api.device_data = &standIn->canvas;
    *api = &standIn->api;
    return anyStatus();
}

wmf_error_t wmf_api_destroy(wmfAPI* api) {
    StandIn* standIn = &standInOf(api);
    for (void* block : standIn->blocks)
        std::free(block);
    delete standIn;
    return wmf_E_None;
}

void* wmf_malloc(wmfAPI* api, size_t size) {
    return standInOf(api).blocks.emplace_back(std::malloc(size));
}

void wmf_ipa_font_map_set(wmfAPI*, wmfMap map) { chooseFont = map; }

wmf_error_t wmf_mem_open(wmfAPI*, unsigned char* bytes, long size) {
    std::fill_n(bytes, size, static_cast<unsigned char>(0));  // it may write
    return anyStatus();
}

wmf_error_t wmf_mem_close(wmfAPI*) { return wmf_E_None; }

wmf_error_t wmf_scan(wmfAPI* api, unsigned long, wmfD_Rect* box) {
    for (float* side : {&box->TL.x, &box->TL.y, &box->BR.x, &box->BR.y})
        *side = answers->i16();
    if (answers->flag()) askForFont(api);
    return anyStatus();
}

wmf_error_t wmf_display_size(wmfAPI*, unsigned* width, unsigned* height, double, double) {
    const bool small = answers->flag();
    *width = small ? answers->u8() : static_cast<unsigned>(answers->i32());
    *height = small ? answers->u8() : static_cast<unsigned>(answers->i32());
    return anyStatus();
}

wmf_error_t wmf_play(wmfAPI* api, unsigned long, wmfD_Rect*) {
    StandIn& standIn = standInOf(api);
    expect(standIn.canvas.width >= 1 && standIn.canvas.height >= 1);
    if (standIn.canvas.width > longestDrawn || standIn.canvas.height > longestDrawn)
        return wmf_E_BadFormat;
    standIn.pixels.resize(size_t{standIn.canvas.width} * standIn.canvas.height);
    for (int& pixel : standIn.pixels)
        pixel = pixel * 7 + answers->i32();
    standIn.canvas.gd_image = answers->below(16) == 15 ? nullptr : &standIn;
    return anyStatus();
}

int* wmf_gd_image_pixels(void* image) {
    return answers->below(16) == 15 ? nullptr : static_cast<StandIn*>(image)->pixels.data();
}

int emf2svg(char* contents, size_t length, char** out, size_t* outLength, generatorOptions*) {
    // The frame, in hundredths of a millimetre, stands behind the bounds.
    Input frame(reinterpret_cast<const uint8_t*>(contents), length);
    frame.take(24);
    int64_t sides[4];
    for (int64_t& side : sides)
        side = frame.i32();
    for (int i = 0; i < 2; ++i)
        if (std::abs(sides[i] - sides[i + 2]) > longestDrawn * 2540 / 96) return 0;
    if (answers->below(16) == 15) return 0;
    const std::string drawing =
        answers->below(4) == 3
            ? textOf(answers->rest())
            : "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                  std::to_string(answers->i16()) + "\" height=\"" + std::to_string(answers->i16()) +
                  "\"><path d=\"M0 0L90 40L9 50z\" fill=\"#123456\"/></svg>";
    *out = static_cast<char*>(std::malloc(drawing.size() + 1));
    std::copy_n(drawing.c_str(), drawing.size() + 1, *out);
    *outLength = drawing.size();
    return 1;
}

}  // extern "C"

// The first byte chooses between the two kinds, the second tells how many bytes the stand-ins
// answer by, which come next; the rest is the file.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const bool windows = input.flag();
    const std::span<const uint8_t> script = input.take(input.u8());
    const std::span<const uint8_t> file = input.rest();

    const auto draw = [&] {
        Input answersFromHereOn(script.data(), script.size());
        answers = &answersFromHereOn;
        std::optional<Bitmap> drawn;
        attempt([&] { drawn = (windows ? drawWmf(file) : drawEmf(file)).bitmap; });
        return drawn;
    };
    const std::optional<Bitmap> drawn = draw();
    if (!drawn) return 0;
    expect(drawn->width() >= 1 && drawn->width() <= longestDrawn);
    expect(drawn->height() >= 1 && drawn->height() <= longestDrawn);
    for (int32_t y = 0; y < drawn->height(); ++y)
        for (int32_t x = 0; x < drawn->width(); ++x)
            expect(drawn->row(y)[x].fourth == 0);
    expect(draw() == drawn);
    return 0;
}
