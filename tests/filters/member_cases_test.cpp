#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "filters/kernels.h"
#include "pixels/bit_filter.h"
#include "support/cases.h"
#include "support/comparison.h"
#include "support/pictures.h"

// Every call of a member in the table of cases gives the expected picture, byte for byte.

namespace tessarine::tests {
namespace {

/// The arguments of a call as the table writes them, and the second picture of the members that
/// take one.
class Arguments {
  public:
    Arguments(std::vector<std::string> texts, PixelBuffer second)
        : mask(std::move(second)), texts_(std::move(texts)) {}
    int32_t number(size_t k) const { return static_cast<int32_t>(std::stol(texts_.at(k))); }
    int16_t shortNumber(size_t k) const { return static_cast<int16_t>(number(k)); }
    float single(size_t k) const { return std::stof(texts_.at(k)); }
    bool truth(size_t k) const { return number(k) != 0; }
    const std::string& text(size_t k) const { return texts_.at(k); }

    PixelBuffer mask;

  private:
    std::vector<std::string> texts_;
};

using Member = std::function<PixelBuffer(cBitFilter&, const Arguments&)>;

/// A member that replaces the image by one made of a copy of it.
template <class Replace>
Member replacing(Replace replace) {
    return [replace](cBitFilter& filter, const Arguments& arguments) {
        const PixelBuffer copy = filter.Bits();
        replace(filter, copy, arguments);
        PixelBuffer result = filter.Bits();
        filter.Bits(copy);
        return result;
    };
}

const std::map<std::string, Member>& members() {
    using F = cBitFilter;
    using A = Arguments;
    static const std::map<std::string, Member> table = {
        // tone
        {"BRIGHTNESS", [](F& f, const A& a) { return f.BRIGHTNESS(a.number(0)); }},
        {"Contrast", [](F& f, const A& a) { return f.Contrast(a.number(0)); }},
        {"GammaCorrection", [](F& f, const A& a) { return f.GammaCorrection(a.number(0)); }},
        {"Equalize", [](F& f, const A&) { return f.Equalize(); }},
        {"SATURATION", [](F& f, const A& a) { return f.SATURATION(a.number(0)); }},
        {"Invert", [](F& f, const A&) { return f.Invert(); }},
        {"GreyScale", [](F& f, const A&) { return f.GreyScale(); }},
        {"Threshold", [](F& f, const A& a) { return f.Threshold(a.number(0)); }},
        {"Reduction", [](F& f, const A& a) { return f.Reduction(a.number(0)); }},
        {"KillChannel",
         [](F& f, const A& a) { return f.KillChannel(a.truth(0), a.truth(1), a.truth(2)); }},
        {"ShiftRGB",
         [](F& f, const A& a) { return f.ShiftRGB(a.number(0), a.number(1), a.number(2)); }},
        {"SwapRGB",
         [](F& f, const A& a) {
             return f.SwapRGB(a.number(0), a.number(1), a.number(2), a.truth(3), a.truth(4),
                              a.truth(5), a.truth(6), a.truth(7), a.truth(8));
         }},
        {"SwapBanks", [](F& f, const A& a) { return f.SwapBanks(a.number(0)); }},
        // hue
        {"COLORIZE",
         [](F& f, const A& a) { return f.COLORIZE(a.single(0), a.single(1), a.single(2)); }},
        {"ISOLATE",
         [](F& f, const A& a) { return f.ISOLATE(a.number(0), a.number(1), a.number(2)); }},
        {"REPLACE",
         [](F& f, const A& a) { return f.REPLACE(a.number(0), a.number(1), a.number(2)); }},
        {"ReplaceHS",
         [](F& f, const A& a) {
             return f.ReplaceHS(a.number(0), a.number(1), a.number(2), a.number(3), a.number(4));
         }},
        {"ReplaceL",
         [](F& f, const A& a) {
             return f.ReplaceL(a.number(0), a.number(1), a.number(2), a.number(3));
         }},
        {"RotateH", [](F& f, const A& a) { return f.RotateH(a.number(0), a.number(1)); }},
        {"RotateL", [](F& f, const A& a) { return f.RotateL(a.number(0), a.number(1)); }},
        {"StretchH",
         [](F& f, const A& a) { return f.StretchH(a.number(0), a.number(1), a.number(2)); }},
        // neighbourhood
        {"MaskFilter",
         [](F& f, const A& a) {
             const tFilterKernel k = GetFilterKernel(a.number(0));
             return f.MaskFilter(k.mskBits, k.Weight, k.rFactor, k.gFactor, k.bFactor, a.truth(1));
         }},
        {"Blurs", [](F& f, const A& a) { return f.Blurs(a.number(0)); }},
        {"SOFTEN", [](F& f, const A& a) { return f.SOFTEN(a.number(0)); }},
        {"SHARPEN", [](F& f, const A& a) { return f.SHARPEN(a.number(0)); }},
        {"EDGEENHANCE", [](F& f, const A& a) { return f.EDGEENHANCE(a.number(0)); }},
        {"CONTOUR", [](F& f, const A& a) { return f.CONTOUR(a.number(0), a.number(1)); }},
        {"SKETCH", [](F& f, const A& a) { return f.SKETCH(a.number(0), a.truth(1), a.number(2)); }},
        {"EMBOSS", [](F& f, const A& a) { return f.EMBOSS(a.number(0)); }},
        {"Engrave", [](F& f, const A& a) { return f.Engrave(a.number(0)); }},
        {"RELIEF", [](F& f, const A&) { return f.RELIEF(); }},
        {"DILATE", [](F& f, const A&) { return f.DILATE(); }},
        {"ERODE", [](F& f, const A&) { return f.ERODE(); }},
        {"RankFilterN4", [](F& f, const A& a) { return f.RankFilterN4(a.number(0)); }},
        {"RankFilterND", [](F& f, const A& a) { return f.RankFilterND(a.number(0)); }},
        {"PAINTING", [](F& f, const A&) { return f.PAINTING(); }},
        {"Dissolve", [](F& f, const A&) { return f.Dissolve(); }},
        // deformation
        {"BEND", [](F& f, const A& a) { return f.BEND(a.number(0), a.truth(1)); }},
        {"FOLD", [](F& f, const A& a) { return f.FOLD(a.number(0), a.number(1), a.truth(2)); }},
        {"STRETCH",
         [](F& f, const A& a) { return f.STRETCH(a.number(0), a.number(1), a.truth(2)); }},
        {"TWIRL", [](F& f, const A& a) { return f.TWIRL(a.number(0), a.number(1), a.truth(2)); }},
        {"ROTATE", [](F& f, const A& a) { return f.ROTATE(a.number(0), a.truth(1)); }},
        {"RotateSmooth", [](F& f, const A& a) { return f.RotateSmooth(a.number(0)); }},
        {"GLASS", [](F& f, const A& a) { return f.GLASS(a.text(0), a.shortNumber(1)); }},
        {"LENS",
         [](F& f, const A& a) {
             return f.LENS(a.single(0), a.single(1), a.single(2), a.number(3));
         }},
        {"WAVES", [](F& f, const A& a) { return f.WAVES(a.number(0), a.number(1), a.number(2)); }},
        {"TILE", [](F& f, const A& a) { return f.TILE(a.number(0)); }},
        {"TileMask",
         [](F& f, const A& a) {
             return f.TileMask(a.mask, a.number(0), a.number(1), a.truth(2), a.number(3),
                               a.number(4));
         }},
        {"Shift", [](F& f, const A& a) { return f.Shift(a.number(0), a.number(1), a.number(2)); }},
        // synthesis
        {"DIFFUSE", [](F& f, const A& a) { return f.DIFFUSE(a.number(0), a.number(1)); }},
        {"HALFTONE",
         [](F& f, const A& a) { return f.HALFTONE(a.number(0), a.number(1), a.number(2)); }},
        {"PIXELIZE", [](F& f, const A& a) { return f.PIXELIZE(a.number(0)); }},
        {"NOISE", [](F& f, const A& a) { return f.NOISE(a.number(0), a.truth(1)); }},
        {"Scanlines", [](F& f, const A& a) { return f.Scanlines(a.number(0)); }},
        {"Grid",
         [](F& f, const A& a) {
             return f.Grid(a.number(0), a.number(1), a.truth(2), a.number(3), a.number(4));
         }},
        {"Light",
         [](F& f, const A& a) {
             return f.Light(a.single(0), a.single(1), a.single(2), a.number(3), a.number(4));
         }},
        {"Texturize", [](F& f, const A& a) { return f.Texturize(a.mask); }},
        {"StuckiBW", [](F& f, const A& a) { return f.StuckiBW(a.number(0)); }},
        {"GradientCircular",
         [](F& f, const A& a) {
             return f.GradientCircular(a.number(0), a.number(1), a.number(2), a.number(3),
                                       a.number(4), a.number(5), a.number(6), a.number(7));
         }},
        {"GradientLinear",
         [](F& f, const A& a) {
             return f.GradientLinear(a.number(0), a.number(1), a.number(2), a.number(3),
                                     a.number(4), a.number(5), a.number(6), a.number(7));
         }},
        // recipes
        {"OLDPHOTO", [](F& f, const A&) { return f.OLDPHOTO(); }},
        {"SpecialColors",
         [](F& f, const A& a) {
             return f.SpecialColors(a.shortNumber(0), a.shortNumber(1), a.shortNumber(2));
         }},
        {"ClassyColors", [](F& f, const A& a) { return f.ClassyColors(a.shortNumber(0)); }},
        {"THERMIQUE", [](F& f, const A&) { return f.THERMIQUE(); }},
        {"XBLACK", [](F& f, const A&) { return f.XBLACK(); }},
        {"PHOTOCOP", [](F& f, const A&) { return f.PHOTOCOP(); }},
        // geometry
        {"BitsBlack", replacing([](F& f, const PixelBuffer&, const A&) { f.BitsBlack(); })},
        {"BitsCrop", replacing([](F& f, const PixelBuffer& p, const A& a) {
             f.BitsCrop(p, a.number(0), a.number(1), a.number(2), a.number(3));
         })},
        {"BitsCropMasked", replacing([](F& f, const PixelBuffer& p, const A& a) {
             f.BitsCropMasked(p, a.number(0), a.number(1), a.number(2), a.number(3));
         })},
        {"BitsResample", replacing([](F& f, const PixelBuffer& p, const A& a) {
             f.BitsResample(p, a.number(0), a.number(1));
         })},
        {"BitsResize", replacing([](F& f, const PixelBuffer& p, const A& a) {
             f.BitsResize(p, a.number(0), a.number(1));
         })},
        {"BitsRotate90",
         replacing([](F& f, const PixelBuffer& p, const A&) { f.BitsRotate90(p); })},
        {"Flip", [](F& f, const A& a) { return f.Flip(a.truth(0), a.truth(1)); }},
    };
    return table;
}

/// A picture of the table as the members are given it.
PixelBuffer readInput(const std::string& name) {
    const PixelBuffer picture = readPixmap(casesFolder() + name);
    return drawBuffer(picture.width(), picture.height(), [&](int32_t x, int32_t y) {
        Pixel p = picture.at(x, y);
        p.fourth = static_cast<uint8_t>((x * 7 + y * 13) & 255);
        return p;
    });
}

/// Rectangles "left,top,right,bottom" separated by ";"; the whole picture where there is none.
RegionHandle readRegion(const std::string& text, const PixelBuffer& picture) {
    if (text.empty()) return wholeRegion(picture);
    std::vector<Rect> rects;
    for (const std::string& part : split(text, ';')) {
        const std::vector<std::string> n = split(part, ',');
        rects.push_back(
            {std::stoi(n.at(0)), std::stoi(n.at(1)), std::stoi(n.at(2)), std::stoi(n.at(3))});
    }
    return regionOf(rects);
}

TEST(MemberCases, EveryCallGivesTheExpectedPictureToTheByte) {
    Tally tally("members");
    for (const CaseRow& row : readCases("members.tsv")) {
        const std::string& call = row.at("call");
        const size_t bracket = call.find('(');
        const std::string name = call.substr(0, bracket);
        const auto member = members().find(name);
        ASSERT_NE(member, members().end()) << call;
        const std::string texts = call.substr(bracket + 1, call.size() - bracket - 2);
        const PixelBuffer picture = readInput(row.at("picture"));
        const RegionHandle region = readRegion(row.at("region"), picture);

        const PixelBuffer mask =
            row.at("mask").empty() ? PixelBuffer() : readPixmap(casesFolder() + row.at("mask"));

        cBitFilter filter;
        filter.Bits(picture);
        filter.BitsRegion(region);
        filter.random = RandomGenerator(static_cast<uint32_t>(std::stoul(row.at("rng_start"))));
        const PixelBuffer result = member->second(filter, Arguments(split(texts, ','), mask));

        const PixelBuffer expected = readPixmap(casesFolder() + row.at("expected"));
        const auto colours = samePicture(row.at("name"), result, expected);
        EXPECT_TRUE(colours) << call << " on " << row.at("picture");
        EXPECT_EQ(std::to_string(result.width()), row.at("width")) << row.at("name");
        EXPECT_EQ(std::to_string(result.height()), row.at("height")) << row.at("name");
        char crc[9];
        std::snprintf(crc, sizeof crc, "%08x", crcOf(result));
        EXPECT_EQ(crc, row.at("crc32")) << row.at("name") << ": margin or fourth channel";
        EXPECT_EQ(std::to_string(filter.random.state()), row.at("rng_end")) << row.at("name");
        EXPECT_TRUE(filter.Bits() == picture) << row.at("name") << ": the source has changed";
        tally.count(name, colours && crc == row.at("crc32"));
    }
    EXPECT_EQ(tally.all(), 148);
}

TEST(MemberCases, AFailingComparisonLeavesActualExpectedAndDifferencePictures) {
    const std::string name = "of-the-comparison-itself";
    const PixelBuffer actual = drawBuffer(2, 1, [](int32_t x, int32_t) {
        return x == 0 ? Pixel{1, 2, 3, 0} : Pixel{10, 20, 30, 0};
    });
    const PixelBuffer expected = drawBuffer(2, 1, [](int32_t x, int32_t) {
        return x == 0 ? Pixel{1, 2, 3, 0} : Pixel{10, 21, 230, 0};
    });
    const auto path = [&](const char* what) {
        return (failuresFolder() / (name + "-" + what + ".ppm")).string();
    };

    for (const char* what : {"actual", "expected", "difference"})
        std::filesystem::remove(path(what));
    EXPECT_TRUE(samePicture(name, actual, actual));
    EXPECT_FALSE(std::filesystem::exists(path("actual")));
    EXPECT_FALSE(samePicture(name, actual, expected));
    EXPECT_EQ(readPixmap(path("actual")), actual);
    EXPECT_EQ(readPixmap(path("expected")), expected);
    // One level apart in green: 127 + 1 \ 2; 200 levels apart in red: 127 + 100.
    EXPECT_EQ(readPixmap(path("difference")).at(0, 0), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(readPixmap(path("difference")).at(1, 0), (Pixel{0, 127, 227, 0}));
    for (const char* what : {"actual", "expected", "difference"})
        std::filesystem::remove(path(what));
}

}  // namespace
}  // namespace tessarine::tests
