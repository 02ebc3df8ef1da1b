#include <array>

#include "noise.h"
#include "scenes.h"

// Flat things: a rose window with the sun behind it, and a piece of woven wool.

namespace draw {

namespace {

/// One piece of glass: a number for its colour, and how far the point is from its leading.
struct Pane {
    int64_t number = 0;
    double fromEdge = 1;
    Vec3 colour;
};

constexpr std::array<int, 5> reds{0xB3121D, 0xD43A1E, 0xE8791C, 0xC01848, 0xF2B31F};
constexpr std::array<int, 5> blues{0x12329A, 0x1F5FC4, 0x0E7F9E, 0x3B2A9C, 0x6AA8E0};
constexpr std::array<int, 5> greens{0x0F7A3C, 0x5FA02C, 0x11604F, 0xC6B52A, 0x2E9C7A};

template <size_t N>
Vec3 pick(const std::array<int, N>& from, int64_t number, int64_t seed) {
    return srgb(from[static_cast<size_t>(hash(number, seed) * N)]);
}

/// A ring of equal panes between two radii.
Pane ringPane(Vec2 p, double inner, double outer, int count, double turn, int64_t seed) {
    const double radius = length(p);
    const double at = (std::atan2(p.y, p.x) / (2 * pi) + turn) * count;
    const double within = std::fabs(fract(at) - 0.5);
    Pane pane;
    pane.number = seed * 1000 + (static_cast<int64_t>(std::floor(at)) + count) % count;
    pane.fromEdge =
        std::min({radius - inner, outer - radius, (0.5 - within) * 2 * pi * radius / count});
    return pane;
}

Pane roseWindow(Vec2 p) {
    const double radius = length(p);
    Pane pane;
    if (radius < 0.055) {
        pane = {1, 0.055 - radius, srgb(0xFFD34A)};
    } else if (radius < 0.125) {
        pane = ringPane(p, 0.055, 0.125, 12, 0, 2);
        pane.colour = pick(reds, pane.number % 2, 700);
    } else if (radius < 0.300) {
        // Twelve petals between spandrels.
        const double at = std::atan2(p.y, p.x) / (2 * pi) * 12;
        const double middle = std::floor(at) + 0.5;
        const Vec2 q = rotated(p, -middle / 12 * 2 * pi) - Vec2{0.215, 0};
        const double petal = length(Vec2{q.x / 0.080, q.y / 0.047}) - 1;
        const double heart = length(Vec2{(q.x - 0.012) / 0.034, q.y / 0.022}) - 1;
        const double ring = std::min(radius - 0.125, 0.300 - radius);
        const auto number = static_cast<int64_t>(middle + 20);
        if (heart < 0) {
            pane = {number + 300, -heart * 0.022, srgb(0xF7E27A)};
        } else if (petal < 0) {
            const double split = std::fabs(q.y) + (std::fabs(heart) < 0.2 ? 0.0 : 0.0);
            pane = {number * 2 + (q.y > 0), std::min({-petal * 0.047, heart * 0.022, split}), {}};
            pane.colour = pick(reds, number % 3 + (q.y > 0 ? 0 : 7), 710);
        } else {
            const double spoke = std::fabs(fract(at + 0.5) - 0.5) * 2 * pi * radius / 12;
            pane = {
                number * 4 + (q.x > 0) + 2 * (q.y > 0), std::min({petal * 0.047, ring, spoke}), {}};
            pane.colour = pick(blues, q.x > 0 ? 0 : 1, 720);
        }
    } else if (radius < 0.345) {
        pane = ringPane(p, 0.300, 0.345, 48, 0, 3);
        pane.colour = pane.number % 2 == 0 ? srgb(0xF2B31F) : srgb(0x9A1530);
    } else {
        // Round lights with a cross in each, and greens between them.
        const double at = std::atan2(p.y, p.x) / (2 * pi) * 12 + 0.5;
        const double middle = std::floor(at);
        const Vec2 q = rotated(p, -middle / 12 * 2 * pi) - Vec2{0.408, 0};
        const double light = length(q) - 0.052;
        const double ring = std::min(radius - 0.345, 0.470 - radius);
        const auto number = static_cast<int64_t>(middle + 30);
        if (light < 0) {
            const double core = length(q) - 0.020;
            const double cross =
                core > 0 ? std::min(std::fabs(q.x + q.y), std::fabs(q.x - q.y)) * 0.7 : 1;
            pane = {number * 8 + (core > 0), std::min({-light, std::fabs(core), cross}), {}};
            pane.colour = core < 0 ? srgb(0xFFE48A)
                                   : pick(number % 2 ? blues : reds,
                                          number % 2 + (q.x * q.x > q.y * q.y ? 0 : 4), 730);
        } else {
            const double spoke = std::fabs(fract(at) - 0.0) < 0.5 ? fract(at) : 1 - fract(at);
            pane = {number * 8 + 4 + (q.x > 0),
                    std::min({light, ring, spoke * 2 * pi * radius / 12}),
                    {}};
            pane.colour = pick(greens, (q.x > 0) + 2, 740);
        }
    }
    return pane;
}

}  // namespace

Scene stainedGlass(double aspect) {
    return [=](double x, double y) {
        const Vec2 p{x - aspect / 2, y - 0.5};
        const double radius = length(p);
        const double rim = 0.470;
        if (radius > rim) {
            // Carved stone around the window: two mouldings, then blocks laid in courses.
            const double out = radius - rim;
            const double rough = fractal(x * 24, y * 24, 6, 750);
            const double course = std::floor(y * 9);
            const double joint =
                std::min(std::fabs(fract(y * 9) - 0.5),
                         std::fabs(fract(x * 4.5 + 0.5 * std::fmod(course, 2.0)) - 0.5) * 2);
            double relief = 0.45 + 0.25 * rough;
            if (out < 0.030)
                relief = 0.20 + 0.75 * std::sin(out / 0.030 * pi) *
                                    saturate(0.6 - 1.0 * dot(p, {0.6, 0.8}) / radius);
            if (out >= 0.030 && joint > 0.485) relief *= 0.55;
            return srgb(0x6B6257) * (relief * 0.55);
        }
        const Pane pane = roseWindow(p);
        const double lead = 0.0042;
        const double sun =
            0.55 + 0.95 * std::exp(-6.5 * std::pow(length(p - Vec2{-0.12, -0.16}), 2));
        const double streaks = fractal(p.x * 12 + 3 * hash(pane.number), p.y * 34, 5, 760);
        const double seeds = smoothstep(0.93, 0.98, noise(p.x * 130, p.y * 130, 770));
        const double tone = 0.70 + 0.6 * hash(pane.number, 780);
        Vec3 glass = pane.colour * (tone * sun * (0.65 + 0.75 * streaks) * 1.55);
        glass += Vec3{1, 0.95, 0.8} * (0.10 * seeds * sun);
        glass = glass * smoothstep(0, 0.016, pane.fromEdge) * 0.75 + glass * 0.25;
        const Vec3 metal = srgb(0x1A1A1E) * (0.6 + 1.2 * smoothstep(0.0035, 0.0, pane.fromEdge));
        return mix(metal, glass, smoothstep(lead * 0.8, lead * 1.2, pane.fromEdge));
    };
}

Scene tartan(double aspect) {
    return [=](double x, double y) {
        // The cloth lies in a few soft folds, which shade it and bend its lines.
        const auto fold = [](double u, double v) {
            return 0.030 * std::sin(4.2 * u + 2.2 * v + 1.2 * std::sin(2.3 * v)) +
                   0.014 * std::sin(9.1 * u - 3.7 * v);
        };
        const double e = 0.002;
        const Vec2 slope{(fold(x + e, y) - fold(x - e, y)) / (2 * e),
                         (fold(x, y + e) - fold(x, y - e)) / (2 * e)};
        const double light = saturate(0.80 - 1.7 * (0.75 * slope.x + 0.55 * slope.y));
        const Vec2 p =
            rotated({x - aspect / 2 + 0.5 * fold(x, y), y - 0.5 + 0.6 * fold(x, y)}, 0.30);

        constexpr double threads = 118;  // to the picture's height
        struct Stripe {
            int count;
            int colour;
        };
        constexpr std::array<Stripe, 11> sett{{{14, 0x9E1B2A},
                                               {2, 0xF1E6CF},
                                               {10, 0x15275C},
                                               {2, 0xE2A72E},
                                               {8, 0x12492F},
                                               {2, 0x111417},
                                               {8, 0x12492F},
                                               {2, 0xE2A72E},
                                               {10, 0x15275C},
                                               {2, 0xF1E6CF},
                                               {14, 0x9E1B2A}}};
        const auto dyed = [&](int64_t thread) {
            int total = 0;
            for (const Stripe& s : sett)
                total += s.count;
            auto at = static_cast<int>((thread % total + total) % total);
            for (const Stripe& s : sett) {
                if (at < s.count) return srgb(s.colour);
                at -= s.count;
            }
            return Vec3{};
        };
        const double u = p.x * threads;
        const double v = p.y * threads;
        const auto warp = static_cast<int64_t>(std::floor(u));
        const auto weft = static_cast<int64_t>(std::floor(v));
        // Twill: two over, two under, one step farther in each row.
        const bool warpAbove = ((warp + weft) % 4 + 4) % 4 < 2;
        const double across = (warpAbove ? fract(u) : fract(v)) - 0.5;
        const double along = warpAbove ? v : u;
        const int64_t thread = warpAbove ? warp : weft + 100000;
        const double over = fract((static_cast<double>(warpAbove ? -warp : -weft) - along) / 4) * 2;
        const double bulge = 0.45 + 0.55 * std::sin(pi * saturate(fract(over)));
        const double round = std::sqrt(std::max(0.0, 1 - 3.4 * across * across));
        const double fibres =
            fractal(along * 0.8 + across * 2.5, across * 9 + hash(thread) * 50, 3, 800);
        const double twist = 0.88 + 0.12 * std::sin(2 * pi * (along * 0.9 + across * 1.6));
        Vec3 wool = dyed(warpAbove ? warp : weft) * (0.85 + 0.30 * hash(thread, 810));
        wool = wool * (0.30 + 0.70 * round) * (0.65 + 0.35 * bulge) * twist * (0.65 + 0.7 * fibres);
        const double fluff = smoothstep(0.80, 0.95, ridges(x * 60, y * 60, 3, 820));
        wool = mix(wool, wool * 1.6 + Vec3{0.03, 0.03, 0.03}, 0.35 * fluff);
        return wool * (0.45 + 1.25 * light);
    };
}

}  // namespace draw
