#include "synthesis_twin.h"

#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "twin_comparison.h"

namespace tessarine::tests {
namespace {

template <class... Values>
std::string list(const Values&... values) {
    std::ostringstream text;
    const char* between = "(";
    ((text << between << values, between = ", "), ...);
    text << ")";
    return text.str();
}

/// A small number, sometimes a factor of any kind.
int32_t mostly(std::mt19937& random, int32_t low, int32_t high) {
    if (random() % 5 == 0) return randomFactor(random);
    return std::uniform_int_distribution<int32_t>(low, high)(random);
}

/// A colour, or -1.
int32_t randomColour(std::mt19937& random) {
    const auto kind = random() % 4;
    if (kind == 0) return -1;
    const auto bits = static_cast<int32_t>(random());
    return kind == 1 ? bits : bits & 0xFFFFFF;
}

/// Mostly a place in or near the image, sometimes far away, sometimes no number.
float randomShare(std::mt19937& random) {
    switch (random() % 8) {
        case 0:
            return std::uniform_real_distribution<float>(-2000, 2000)(random);
        case 1: {
            constexpr float odd[] = {std::numeric_limits<float>::quiet_NaN(),
                                     std::numeric_limits<float>::infinity(),
                                     -std::numeric_limits<float>::infinity(), 1e30F, 1e7F};
            return odd[random() % 5];
        }
        default:
            return std::uniform_real_distribution<float>(-0.2F, 1.2F)(random);
    }
}

/// A call that draws random numbers: `library(filter)` and `twin(picture, region, state)`, both
/// from the same state.
template <class Library, class Twin>
Call drawing(std::mt19937& random, const std::string& text, Library library, Twin twin) {
    const auto first = static_cast<uint32_t>(random()) & 0xFFFFFF;
    const auto state = std::make_shared<uint32_t>(first);
    Call call{text, library,
              [=](const PixelBuffer& p, const Region& r) { return twin(p, r, *state); }};
    call.firstState = first;
    call.twinsState = [state] { return *state; };
    return call;
}

TEST(SynthesisTwin, DiffuseAgreesAndLeavesTheGeneratorWhereItsTwinDoes) {
    compare("DIFFUSE", 51, [](std::mt19937& random) {
        const int32_t w = mostly(random, -20, 60);
        const int32_t h = mostly(random, -20, 60);
        return drawing(
            random, list(w, h), [=](cBitFilter& f) { return f.DIFFUSE(w, h); },
            [=](const PixelBuffer& p, const Region& r, uint32_t& state) {
                return twin::diffuse(p, r, w, h, state);
            });
    });
}

TEST(SynthesisTwin, HalftoneAgreesAndFailsWhereItsTwinFails) {
    compare("HALFTONE", 52, [](std::mt19937& random) {
        const int32_t radius = mostly(random, -2, 25);
        const int32_t definition = mostly(random, 0, 100);
        const int32_t intensity = mostly(random, 0, 100);
        return Call{list(radius, definition, intensity),
                    [=](cBitFilter& f) { return f.HALFTONE(radius, definition, intensity); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::halftone(p, r, radius, definition, intensity);
                    }};
    });
}

TEST(SynthesisTwin, PixelizeAgrees) {
    compare("PIXELIZE", 53, [](std::mt19937& random) {
        const int32_t size = mostly(random, -3, 40);
        return Call{
            list(size), [=](cBitFilter& f) { return f.PIXELIZE(size); },
            [=](const PixelBuffer& p, const Region& r) { return twin::pixelize(p, r, size); }};
    });
}

TEST(SynthesisTwin, NoiseAgreesAndLeavesTheGeneratorWhereItsTwinDoes) {
    compare("NOISE", 54, [](std::mt19937& random) {
        const int32_t factor = mostly(random, 0, 100);
        const bool equalized = random() % 2 == 0;
        return drawing(
            random, list(factor, equalized),
            [=](cBitFilter& f) { return f.NOISE(factor, equalized); },
            [=](const PixelBuffer& p, const Region& r, uint32_t& state) {
                return twin::noise(p, r, factor, equalized, state);
            });
    });
}

TEST(SynthesisTwin, ScanlinesAgrees) {
    compareFactor("Scanlines", 55, &cBitFilter::Scanlines, twin::scanlines);
}

TEST(SynthesisTwin, GridAgreesAndFailsWhereItsTwinFails) {
    compare("Grid", 56, [](std::mt19937& random) {
        const int32_t h = mostly(random, -1, 40);
        const int32_t v = mostly(random, -1, 40);
        const bool force = random() % 2 == 0;
        const int32_t colour = randomColour(random);
        const int32_t opacity = mostly(random, 0, 255);
        return Call{list(h, v, force, colour, opacity),
                    [=](cBitFilter& f) { return f.Grid(h, v, force, colour, opacity); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::grid(p, r, h, v, force, colour, opacity);
                    }};
    });
}

TEST(SynthesisTwin, LightAgreesAndFailsWhereItsTwinFails) {
    compare("Light", 57, [](std::mt19937& random) {
        const float x = randomShare(random);
        const float y = randomShare(random);
        const float d = randomShare(random);
        const int32_t intensity = mostly(random, -300, 500);
        const int32_t fallOff = mostly(random, 0, 100);
        return Call{list(x, y, d, intensity, fallOff),
                    [=](cBitFilter& f) { return f.Light(x, y, d, intensity, fallOff); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::light(p, r, x, y, d, intensity, fallOff);
                    }};
    });
}

TEST(SynthesisTwin, TexturizeAgreesAndFailsWhereItsTwinFails) {
    compare("Texturize", 58, [](std::mt19937& random) {
        const PixelBuffer texture = randomPicture(random);
        return Call{
            list(texture.width(), texture.height()),
            [=](cBitFilter& f) { return f.Texturize(texture); },
            [=](const PixelBuffer& p, const Region& r) { return twin::texturize(p, r, texture); }};
    });
}

TEST(SynthesisTwin, StuckiBwAgrees) {
    compare("StuckiBW", 59, [](std::mt19937& random) {
        const int32_t weight = mostly(random, -5, 40);
        return Call{
            list(weight), [=](cBitFilter& f) { return f.StuckiBW(weight); },
            [=](const PixelBuffer& p, const Region& r) { return twin::stuckiBw(p, r, weight); }};
    });
}

twin::GradientArguments randomGradient(std::mt19937& random) {
    twin::GradientArguments with;
    with.X1 = mostly(random, -20, 90);
    with.Y1 = mostly(random, -20, 90);
    with.X2 = mostly(random, -20, 90);
    with.Y2 = mostly(random, -20, 90);
    switch (random() % 6) {
        case 0:
            with.X2 = with.X1;
            break;
        case 1:
            with.Y2 = with.Y1;
            break;
        case 2:
            // Across the image runs the border behind which the squares wrap.
            with.X1 = with.Y1 = -32750;
            break;
        default:
            break;
    }
    with.Color1 = randomColour(random);
    with.Color2 = randomColour(random);
    with.Pressure = mostly(random, 0, 130);
    with.Frequency = mostly(random, 0, 20);
    return with;
}

std::string listOf(const twin::GradientArguments& with) {
    return list(with.X1, with.Y1, with.X2, with.Y2, with.Color1, with.Color2, with.Pressure,
                with.Frequency);
}

TEST(SynthesisTwin, GradientCircularAgrees) {
    compare("GradientCircular", 60, [](std::mt19937& random) {
        const twin::GradientArguments a = randomGradient(random);
        return Call{
            listOf(a),
            [=](cBitFilter& f) {
                return f.GradientCircular(a.X1, a.Y1, a.X2, a.Y2, a.Color1, a.Color2, a.Pressure,
                                          a.Frequency);
            },
            [=](const PixelBuffer& p, const Region& r) { return twin::gradient(p, r, a, false); }};
    });
}

TEST(SynthesisTwin, GradientLinearAgrees) {
    compare("GradientLinear", 61, [](std::mt19937& random) {
        const twin::GradientArguments a = randomGradient(random);
        return Call{
            listOf(a),
            [=](cBitFilter& f) {
                return f.GradientLinear(a.X1, a.Y1, a.X2, a.Y2, a.Color1, a.Color2, a.Pressure,
                                        a.Frequency);
            },
            [=](const PixelBuffer& p, const Region& r) { return twin::gradient(p, r, a, true); }};
    });
}

}  // namespace
}  // namespace tessarine::tests
