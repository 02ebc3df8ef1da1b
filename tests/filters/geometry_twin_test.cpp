#include "geometry_twin.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "twin_comparison.h"

namespace tessarine::tests {
namespace {

/// A member that replaces the image, as one that gives a picture: the image is put back.
std::function<PixelBuffer(cBitFilter&)> replacing(const std::function<void(cBitFilter&)>& member) {
    return [member](cBitFilter& filter) {
        const PixelBuffer image = filter.Bits();
        try {
            member(filter);
        } catch (const StatementFailed&) {
            filter.Bits(image);
            throw;
        }
        PixelBuffer result = filter.Bits();
        EXPECT_EQ(filter.BitsWidth(), result.width());
        EXPECT_EQ(filter.BitsHeight(), result.height());
        filter.Bits(image);
        return result;
    };
}

/// The source that a member is given: none stands for the image itself, which is the common one.
std::optional<PixelBuffer> randomSource(std::mt19937& random) {
    if (random() % 2 == 0) return std::nullopt;
    return randomPicture(random);
}

/// The image itself, where it is the source, not a copy of it.
const PixelBuffer& sourceOf(const std::optional<PixelBuffer>& source, const cBitFilter& filter) {
    return source ? *source : filter.Bits();
}

/// A corner, mostly in or near a picture, sometimes anywhere in 32 bits.
int32_t randomCorner(std::mt19937& random) {
    const auto bits = static_cast<int32_t>(random());
    return random() % 8 == 0 ? bits : bits % 90;
}

/// A side of a resized picture, a few of them 0 or below.
int32_t randomSide(std::mt19937& random) {
    if (random() % 20 == 0) return -static_cast<int32_t>(random() % 1000000);
    return static_cast<int32_t>(random() % 90);
}

std::string textOf(const Rect& r) {
    return "(" + std::to_string(r.left) + ", " + std::to_string(r.top) + ", " +
           std::to_string(r.right) + ", " + std::to_string(r.bottom) + ")";
}

Rect randomCorners(std::mt19937& random) {
    Rect r;
    for (int32_t* corner : {&r.left, &r.top, &r.right, &r.bottom})
        *corner = randomCorner(random);
    if (random() % 8 == 0) return r;
    return {std::min(r.left, r.right), std::min(r.top, r.bottom), std::max(r.left, r.right),
            std::max(r.top, r.bottom)};
}

TEST(GeometryTwin, BitsBlackAgrees) {
    compare("BitsBlack", 101, [](std::mt19937&) {
        return Call{"()", replacing([](cBitFilter& f) { f.BitsBlack(); }), twin::bitsBlack};
    });
}

TEST(GeometryTwin, BitsCropAgrees) {
    compare("BitsCrop", 102, [](std::mt19937& random) {
        const auto source = randomSource(random);
        const Rect r = randomCorners(random);
        return Call{textOf(r), replacing([=](cBitFilter& f) {
                        f.BitsCrop(sourceOf(source, f), r.left, r.top, r.right, r.bottom);
                    }),
                    [=](const PixelBuffer& image, const Region&) {
                        return twin::bitsCrop(image, source.value_or(image), r);
                    }};
    });
}

TEST(GeometryTwin, BitsCropMaskedAgrees) {
    compare("BitsCropMasked", 103, [](std::mt19937& random) {
        const auto source = randomSource(random);
        const Rect r = randomCorners(random);
        return Call{textOf(r), replacing([=](cBitFilter& f) {
                        f.BitsCropMasked(sourceOf(source, f), r.left, r.top, r.right, r.bottom);
                    }),
                    [=](const PixelBuffer& image, const Region& region) {
                        return twin::bitsCropMasked(source.value_or(image), region, r);
                    }};
    });
}

TEST(GeometryTwin, BitsResampleAgreesAndFailsWhereItsTwinFails) {
    compare("BitsResample", 104, [](std::mt19937& random) {
        const auto source = randomSource(random);
        const int32_t width = randomSide(random);
        const int32_t height = randomSide(random);
        return Call{
            "(" + std::to_string(width) + ", " + std::to_string(height) + ")",
            replacing([=](cBitFilter& f) { f.BitsResample(sourceOf(source, f), width, height); }),
            [=](const PixelBuffer& image, const Region&) {
                return twin::bitsResample(source.value_or(image), width, height);
            }};
    });
}

TEST(GeometryTwin, BitsResampleOfALargePictureAgrees) {
    const PixelBuffer picture = randomBuffer(523, 391, 108);
    for (const auto& [width, height] :
         {std::pair{261, 195}, std::pair{523, 391}, std::pair{1046, 800}, std::pair{3, 2000},
          std::pair{2000, 3}, std::pair{777, 123}}) {
        cBitFilter filter;
        filter.timeGetTime = [] { return 0U; };
        filter.Bits(picture);
        filter.BitsResample(picture, width, height);
        ASSERT_TRUE(sameBuffer("twin-BitsResample", filter.Bits(),
                               twin::bitsResample(picture, width, height)))
            << width << " by " << height;
    }
}

TEST(GeometryTwin, BitsResizeAgrees) {
    compare("BitsResize", 105, [](std::mt19937& random) {
        const auto source = randomSource(random);
        const int32_t width = randomSide(random);
        const int32_t height = randomSide(random);
        return Call{
            "(" + std::to_string(width) + ", " + std::to_string(height) + ")",
            replacing([=](cBitFilter& f) { f.BitsResize(sourceOf(source, f), width, height); }),
            [=](const PixelBuffer& image, const Region&) {
                return twin::bitsResize(image, source.value_or(image), width, height);
            }};
    });
}

TEST(GeometryTwin, BitsRotate90Agrees) {
    compare("BitsRotate90", 106, [](std::mt19937& random) {
        const auto source = randomSource(random);
        return Call{source ? "() of another picture" : "()",
                    replacing([=](cBitFilter& f) { f.BitsRotate90(sourceOf(source, f)); }),
                    [=](const PixelBuffer& image, const Region&) {
                        return twin::bitsRotate90(image, source.value_or(image));
                    }};
    });
}

TEST(GeometryTwin, FlipAgrees) {
    compare("Flip", 107, [](std::mt19937& random) {
        const auto bits = random();
        const bool fH = bits & 1;
        const bool fV = bits & 2;
        return Call{
            "(" + std::to_string(fH) + ", " + std::to_string(fV) + ")",
            [=](cBitFilter& f) { return f.Flip(fH, fV); },
            [=](const PixelBuffer& image, const Region&) { return twin::flip(image, fH, fV); }};
    });
}

}  // namespace
}  // namespace tessarine::tests
