#include "deformation_twin.h"

#include <array>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "twin_comparison.h"

namespace tessarine::tests {
namespace {

namespace slow = twin::deformation;

int32_t between(std::mt19937& random, int32_t low, int32_t high) {
    return std::uniform_int_distribution<int32_t>(low, high)(random);
}

std::string textOf(const std::vector<double>& arguments) {
    std::string text;
    for (const double argument : arguments)
        text += (text.empty() ? "(" : ", ") + std::to_string(argument);
    return text + ")";
}

/// A member of one or two factors that may blacken what has no source.
template <class Member, class Twin>
void compareCleaning(const std::string& name, uint32_t seed, Member member, Twin twin) {
    compare(name, seed, [=](std::mt19937& random) {
        const int32_t first = randomFactor(random);
        const int32_t second = randomFactor(random);
        const bool clean = random() % 2 == 0;
        return Call{textOf({double(first), double(second), double(clean)}),
                    [=](cBitFilter& f) { return member(f, first, second, clean); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin(p, r, first, second, clean);
                    }};
    });
}

TEST(DeformationTwin, BendAgrees) {
    compareCleaning(
        "BEND", 1, [](cBitFilter& f, int32_t a, int32_t, bool clean) { return f.BEND(a, clean); },
        [](const PixelBuffer& p, const Region& r, int32_t a, int32_t, bool clean) {
            return slow::bend(p, r, a, clean);
        });
}

TEST(DeformationTwin, FoldAgrees) {
    compareCleaning("FOLD", 2, std::mem_fn(&cBitFilter::FOLD), slow::fold);
}

TEST(DeformationTwin, StretchAgrees) {
    compareCleaning("STRETCH", 3, std::mem_fn(&cBitFilter::STRETCH), slow::stretch);
}

TEST(DeformationTwin, TwirlAgrees) {
    compareCleaning("TWIRL", 4, std::mem_fn(&cBitFilter::TWIRL), slow::twirl);
}

TEST(DeformationTwin, RotateAgrees) {
    compareCleaning(
        "ROTATE", 5,
        [](cBitFilter& f, int32_t a, int32_t, bool clean) { return f.ROTATE(a, clean); },
        [](const PixelBuffer& p, const Region& r, int32_t a, int32_t, bool clean) {
            return slow::rotate(p, r, a, clean);
        });
}

TEST(DeformationTwin, RotateSmoothAgrees) {
    compareFactor("RotateSmooth", 6, &cBitFilter::RotateSmooth, slow::rotateSmooth);
}

TEST(DeformationTwin, GlassAgreesForListedAndUnlistedStyles) {
    const auto makeCall = [](std::mt19937& random) {
        static const std::array<std::string, 8> styles{
            "slanting", "vertical", "horizontal", "squary", "curtain", "curtain", "Vertical", ""};
        const std::string style = styles[random() % styles.size()];
        const auto intensity = static_cast<int16_t>(
            random() % 10 == 0 ? between(random, -32768, 32767) : between(random, -1, 4));
        return Call{"(" + style + ", " + std::to_string(intensity) + ")",
                    [=](cBitFilter& f) { return f.GLASS(style, intensity); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return slow::glass(p, r, style, intensity);
                    }};
    };
    compare("GLASS", 7, makeCall, 800);
}

TEST(DeformationTwin, LensAgrees) {
    const auto makeCall = [](std::mt19937& random) {
        const auto relative = [&random](float low, float high) {
            constexpr float infinity = std::numeric_limits<float>::infinity();
            constexpr std::array<float, 6> odd{
                infinity, -infinity, std::numeric_limits<float>::quiet_NaN(), 1e30F, -1e30F, 0};
            if (random() % 20 == 0) return odd[random() % odd.size()];
            return std::uniform_real_distribution<float>(low, high)(random);
        };
        const float x = relative(-0.5F, 1.5F);
        const float y = relative(-0.5F, 1.5F);
        // One in six is so large that its squares wrap.
        const float d = random() % 6 == 0 ? relative(-1e4F, 1e5F) : relative(-0.1F, 1.5F);
        const int32_t factor =
            random() % 3 == 0 ? 150 - static_cast<int32_t>(random() % 3) : randomFactor(random);
        return Call{textOf({x, y, d, double(factor)}),
                    [=](cBitFilter& f) { return f.LENS(x, y, d, factor); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return slow::lens(p, r, x, y, d, factor);
                    }};
    };
    compare("LENS", 8, makeCall, 1500);
}

TEST(DeformationTwin, WavesAgrees) {
    compare("WAVES", 9, [](std::mt19937& random) {
        const int32_t f = randomFactor(random);
        const int32_t a = randomFactor(random);
        const int32_t start = randomFactor(random);
        return Call{
            textOf({double(f), double(a), double(start)}),
            [=](cBitFilter& filter) { return filter.WAVES(f, a, start); },
            [=](const PixelBuffer& p, const Region& r) { return slow::waves(p, r, f, a, start); }};
    });
}

TEST(DeformationTwin, TileAgrees) {
    compareFactor("TILE", 10, &cBitFilter::TILE, slow::tile);
    compare("TILE", 11, [](std::mt19937& random) {
        const int32_t factor = between(random, -2, 20);
        return Call{
            "(" + std::to_string(factor) + ")", [=](cBitFilter& f) { return f.TILE(factor); },
            [=](const PixelBuffer& p, const Region& r) { return slow::tile(p, r, factor); }};
    });
}

TEST(DeformationTwin, TileMaskAgreesAndFailsWhereItsTwinFails) {
    const auto makeCall = [](std::mt19937& random) {
        PixelBuffer mask(between(random, 0, 20), between(random, 0, 20));
        Pixel* block = mask.writableBlock();
        for (size_t i = 0; i < mask.pixelCount(); ++i)
            block[i] = random() % 3 == 0
                           ? Pixel{3, 2, 1, 0}
                           : Pixel{static_cast<uint8_t>(random()), static_cast<uint8_t>(random()),
                                   static_cast<uint8_t>(random()), 9};
        const bool tiled = random() % 2 == 0;
        const auto offset = [&] {
            return tiled || random() % 3 != 0 ? between(random, -90, 90) : randomFactor(random);
        };
        const int32_t x = offset();
        const int32_t y = offset();
        const int32_t transparency =
            random() % 8 == 0 ? randomFactor(random) : between(random, 0, 100);
        constexpr std::array<int32_t, 4> colours{-1, 0x030201, 0x7F030201, 0x030201 - 0x1000000};
        const int32_t colour = colours[random() % colours.size()];
        return Call{
            textOf({double(x), double(y), double(tiled), double(transparency), double(colour)}),
            [=](cBitFilter& f) { return f.TileMask(mask, x, y, tiled, transparency, colour); },
            [=](const PixelBuffer& p, const Region& r) {
                return slow::tileMask(p, r, mask, x, y, tiled, transparency, colour);
            }};
    };
    compare("TileMask", 12, makeCall, 1500);
}

TEST(DeformationTwin, TileMaskAgreesWhereTheStepIsNegative) {
    // Offsets just beyond the picture's right and lower edge, where the margin is.
    std::mt19937 random(13);
    for (int round = 0; round < 200; ++round) {
        const PixelBuffer picture = randomPicture(random);
        const Region region(Rect{-2, -2, picture.width() + 2, picture.height() + 2});
        const PixelBuffer mask =
            randomBuffer(between(random, 1, 6), between(random, 1, 6), random());
        const int32_t x = picture.width() - 1 + between(random, -1, 4);
        const int32_t y = picture.height() - 1 + between(random, -1, 4);
        cBitFilter filter;
        filter.timeGetTime = [] { return 0U; };
        filter.Bits(picture);
        const auto handle = std::make_shared<const Region>(region);
        filter.BitsRegion(handle);
        ASSERT_TRUE(sameBuffer("twin-TileMask", filter.TileMask(mask, x, y, false, 30, -1),
                               slow::tileMask(picture, region, mask, x, y, false, 30, -1)));
    }
}

TEST(DeformationTwin, ShiftAgrees) {
    const auto makeCall = [](std::mt19937& random) {
        const auto colour = static_cast<int32_t>(random());
        const int32_t inc = randomFactor(random);
        const int32_t tolerance =
            random() % 2 == 0 ? between(random, 0, 200) : randomFactor(random);
        return Call{textOf({double(colour), double(inc), double(tolerance)}),
                    [=](cBitFilter& f) { return f.Shift(colour, inc, tolerance); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return slow::shift(p, r, colour, inc, tolerance);
                    }};
    };
    compare("Shift", 14, makeCall, 800);
}

/// All deformations whose places are computed many at once, on one picture.
void compareOn(const PixelBuffer& picture, const Region& region,
               const std::vector<int32_t>& factors) {
    cBitFilter filter;
    filter.timeGetTime = [] { return 0U; };
    filter.Bits(picture);
    const auto handle = std::make_shared<const Region>(region);
    filter.BitsRegion(handle);
    const auto same = [](const PixelBuffer& result, const PixelBuffer& expected) {
        return sameBuffer("twin-large", result, expected);
    };
    for (const int32_t f : factors) {
        ASSERT_TRUE(same(filter.TWIRL(f, f, true), slow::twirl(picture, region, f, f, true))) << f;
        ASSERT_TRUE(same(filter.TWIRL(f, 0, false), slow::twirl(picture, region, f, 0, false)))
            << f;
        ASSERT_TRUE(same(filter.BEND(f, true), slow::bend(picture, region, f, true))) << f;
        ASSERT_TRUE(same(filter.BEND(f, false), slow::bend(picture, region, f, false))) << f;
        ASSERT_TRUE(same(filter.ROTATE(f, true), slow::rotate(picture, region, f, true))) << f;
        ASSERT_TRUE(same(filter.RotateSmooth(f), slow::rotateSmooth(picture, region, f))) << f;
        ASSERT_TRUE(same(filter.FOLD(f, f, true), slow::fold(picture, region, f, f, true))) << f;
    }
    for (const int16_t intensity : {0, 1, 2, 3})
        for (const char* style : {"slanting", "squary", "curtain"})
            ASSERT_TRUE(same(filter.GLASS(style, intensity),
                             slow::glass(picture, region, style, intensity)))
                << style << intensity;
}

TEST(DeformationTwin, LargePicturesAgree) {
    const std::vector<int32_t> factors{0, 1, -7, 45, 90, 180, 100, -50000, 2000000000};
    const PixelBuffer picture = randomBuffer(523, 391, 15);
    compareOn(picture, Region(Rect{0, 0, 523, 391}), factors);
    compareOn(picture, Region(Rect{-5, 3, 500, 395}), {-33});
    compareOn(picture, *regionOf({{3, 3, 200, 200}, {100, 150, 520, 380}}), {33});
}

TEST(DeformationTwin, PicturesSoWideThatSquaredDistancesWrapAgree) {
    const PixelBuffer picture = randomBuffer(100001, 3, 16);
    compareOn(picture, Region(Rect{0, 0, 100001, 3}), {0, 3, -120});
}

}  // namespace
}  // namespace tessarine::tests
