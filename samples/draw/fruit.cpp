#include <array>

#include "noise.h"
#include "scenes.h"
#include "solids.h"

// A still life in window light: a painted bowl with apples and a lemon, two pears, a bunch of
// grapes.

namespace draw {

namespace {

enum Solid { table, backdrop, bowl, apple, lemon, pear, stem, grape, cloth };

struct Place {
    Vec3 at;
    double size;
    double lean;  ///< about the axis of sight
    int colour;
};
constexpr Vec3 bowlAt{-0.35, 0, -0.25};
constexpr std::array<Place, 5> apples{{{{-0.82, 0.86, -0.10}, 0.40, 0.35, 0xB3202A},
                                       {{-0.12, 0.88, -0.02}, 0.41, -0.25, 0xC23A22},
                                       {{-0.45, 0.93, -0.62}, 0.42, 0.1, 0xA8B23A},
                                       {{-0.46, 1.30, -0.22}, 0.39, 0.18, 0xC62B2B},
                                       {{-1.78, 0.34, 0.42}, 0.40, -0.5, 0xB5282C}}};
constexpr std::array<Place, 2> pears{
    {{{1.02, 0.44, -0.12}, 0.46, -0.10, 0xC7A93A}, {{1.62, 0.36, 0.38}, 0.40, -1.25, 0xB9B04A}}};
constexpr Place theLemon{{0.42, 0.27, 0.78}, 0.27, 0.35, 0xF2C81E};

Vec3 leaned(Vec3 p, const Place& place) {
    const Vec3 q = p - place.at;
    const Vec2 r = rotated({q.x, q.y}, place.lean);
    return Vec3{r.x, r.y, q.z} / place.size;
}
double appleShape(Vec3 q) {
    // A ring that closes over its own hole: dimples above and below, narrower at the foot.
    const double taper = 1 + 0.10 * q.y;
    const double out = std::sqrt(q.x * q.x + q.z * q.z) / taper;
    return (length(Vec2{out - 0.36, q.y * 1.02}) - 0.60) * 0.85;
}
double pearShape(Vec3 q) {
    const double belly = length(q) - 0.86;
    const double neck = ellipsoid(q - Vec3{0.04, 0.98, 0}, {0.42, 0.62, 0.42});
    return smoothUnion(belly, neck, 0.55) * 0.9;
}
double stalk(Vec3 q, double from, double to) {
    const double y = std::clamp(q.y, from, to);
    const double bend = 0.10 * (y - from) * (y - from);
    return length(q - Vec3{bend, y, 0}) - 0.035;
}
struct Grape {
    Vec3 at;
    double radius;
};
std::array<Grape, 34> bunchOfGrapes() {
    std::array<Grape, 34> bunch;
    for (size_t i = 0; i < bunch.size(); ++i) {
        const auto number = static_cast<int64_t>(i);
        const double along = hash(number, 71);
        const double spread = 0.34 * (1.05 - along);
        const double turn = 2 * pi * hash(number, 72);
        const double up = std::fabs(std::sin(turn)) * spread * 1.15;
        bunch[i] = {
            {-0.98 + 0.95 * along, 0.14 + up, 1.02 + 0.22 * along + std::cos(turn) * spread},
            0.125 + 0.02 * hash(number, 73)};
    }
    return bunch;
}
const std::array<Grape, 34> grapes = bunchOfGrapes();

Nearest nearestFruit(Vec3 p) {
    Nearest n;
    n.offer(p.y, table);
    n.offer(p.z + 2.6 - 0.10 * std::sin(p.x * 2.2 + 0.4) - 0.05 * std::sin(p.x * 5.7), backdrop);
    // The bowl: the lower part of a shell, on a foot.
    const Vec3 b = p - bowlAt;
    const double out = std::sqrt(b.x * b.x + b.z * b.z);
    const double shell = std::fabs(ellipsoid(b - Vec3{0, 0.92, 0}, {1.08, 0.80, 1.08})) - 0.035;
    const double cut = std::max(shell, b.y - 0.86);
    const double rim = length(Vec2{out - 1.072, b.y - 0.86}) - 0.045;
    const double foot = std::max(std::fabs(out - 0.46) - 0.05, std::fabs(b.y - 0.08) - 0.10);
    n.offer(smoothUnion(std::min(cut, rim), foot, 0.05), bowl);
    for (const Place& place : apples) {
        const Vec3 q = leaned(p, place);
        if (length(q) > 1.6) {
            n.offer((length(q) - 1.35) * place.size, apple);
            continue;
        }
        n.offer(appleShape(q) * place.size, apple);
        n.offer(stalk(q, 0.35, 0.95) * place.size, stem);
    }
    for (const Place& place : pears) {
        const Vec3 q = leaned(p, place);
        if (length(q) > 2.8) {
            n.offer((length(q) - 2.3) * place.size, pear);
            continue;
        }
        n.offer(pearShape(q) * place.size, pear);
        n.offer(stalk(q, 1.4, 2.05) * place.size, stem);
    }
    if (const Vec3 q = leaned(p, theLemon); length(q) > 1.9) {
        n.offer((length(q) - 1.6) * theLemon.size, lemon);
    } else {
        const double body = ellipsoid(q, {1.25, 0.95, 0.95});
        const double tips = length(Vec3{std::fabs(q.x) - 1.22, q.y, q.z}) - 0.14;
        const double peel = 0.012 * noise(std::atan2(q.y, q.z) * 9, q.x * 12, 5);
        n.offer((smoothUnion(body, tips, 0.22) - peel) * theLemon.size * 0.8, lemon);
    }
    const Vec3 bunch = p - Vec3{-0.5, 0.25, 1.1};
    const double aboutGrapes = length(bunch) - 0.95;
    if (aboutGrapes > 0.3) {
        n.offer(aboutGrapes, grape);
    } else {
        for (const Grape& g : grapes)
            n.offer(length(p - g.at) - g.radius, grape);
    }
    // A folded cloth under the pears, hanging over the table's edge to the right.
    const double folds =
        0.030 * std::sin(p.x * 6 + 1.5 * std::sin(p.z * 2.5)) + 0.02 * std::sin(p.z * 7 + p.x);
    const double sheet = std::fabs(p.y - 0.045 - folds) - 0.012;
    const double side =
        roundedBox(turned(p - Vec3{1.55, 0.05, 0.35}, 0.22), {1.15, 0.4, 0.78}, 0.05);
    n.offer(std::max(sheet * 0.8, side), cloth);
    return n;
}

Material fruitSkin(Vec3 p, int solid) {
    switch (solid) {
        case apple: {
            const Place* own = apples.data();
            for (const Place& place : apples) {
                if (std::fabs(appleShape(leaned(p, place))) <
                    std::fabs(appleShape(leaned(p, *own))))
                    own = &place;
            }
            const Vec3 q = leaned(p, *own);
            const double around = std::atan2(q.x, q.z);
            const double streak = fractal(around * 9, q.y * 1.4, 4, 500);
            const double blush =
                smoothstep(0.25, 0.75, fractal(q.x * 1.3 + 3, q.z * 1.3 + q.y, 3, 510));
            Vec3 colour = mix(srgb(0xD9A441), srgb(own->colour),
                              saturate(0.30 + 0.55 * blush + 0.5 * streak));
            const double lenticel = smoothstep(0.90, 0.97, noise(around * 22, q.y * 26, 520));
            colour = mix(colour, srgb(0xE8C27A), 0.6 * lenticel);
            colour = mix(colour, srgb(0x6B5A22),
                         smoothstep(0.30, 0.05, std::sqrt(q.x * q.x + q.z * q.z)));
            return {.colour = colour, .gloss = 0.45, .polish = 55, .glow = 0.1};
        }
        case pear: {
            const double russet = fractal(p.x * 9, p.y * 9 + p.z * 7, 5, 530);
            Vec3 colour = mix(srgb(0xC9B13C), srgb(0x8C8F2E),
                              smoothstep(0.3, 0.8, fractal(p.x * 2, p.y * 2, 3, 540)));
            colour = mix(colour, srgb(0x8A5A26), 0.8 * smoothstep(0.52, 0.70, russet));
            colour = mix(colour, srgb(0x5F4A1C),
                         0.7 * smoothstep(0.86, 0.93, noise(p.x * 55, p.y * 55 + p.z * 40, 550)));
            return {.colour = colour, .gloss = 0.22, .polish = 25, .glow = 0.1};
        }
        case lemon: {
            const Vec3 q = leaned(p, theLemon);
            const Vec3 colour =
                mix(srgb(0xF6D02A), srgb(0xD9C832), smoothstep(0.7, 1.3, std::fabs(q.x)));
            return {.colour = colour, .gloss = 0.25, .polish = 30, .glow = 0.2};
        }
        default: {
            const double bloom = fractal(p.x * 7, p.y * 7 + p.z * 5, 4, 560);
            return {
                .colour = mix(srgb(0x2E1238), srgb(0x6C6A92), 0.55 * smoothstep(0.42, 0.75, bloom)),
                .gloss = 0.55,
                .polish = 90,
                .glow = 0.35};
        }
    }
}

Material fruitMaterial(Vec3 p, Vec3 normal, int solid) {
    switch (solid) {
        case table: {
            const double board = std::floor((p.z + 10) / 0.85);
            const double grain = fractal(p.x * 1.1 + board * 7, p.z * 16, 5, 570, 0.6);
            const double seam =
                smoothstep(0.02, 0.0, std::fabs(fract((p.z + 10) / 0.85) - 0.5) < 0.485 ? 1 : 0);
            Vec3 colour = mix(srgb(0x5E3B22), srgb(0x2E1A0E), grain);
            return {.colour = mix(colour, srgb(0x120A05), seam), .gloss = 0.32, .polish = 30};
        }
        case backdrop: {
            const double age = fractal(p.x * 1.4, p.y * 1.4, 6, 580);
            return {.colour = mix(srgb(0x4C4A3E), srgb(0x262A2A), age), .gloss = 0, .polish = 5};
        }
        case bowl: {
            const Vec3 b = p - bowlAt;
            const double around = std::atan2(b.x, b.z);
            Vec3 colour = srgb(0xEDEBE4);
            const bool outside = normal.x * b.x + normal.z * b.z > 0;
            if (outside) {
                const double vine = std::fabs(b.y - 0.52 - 0.07 * std::sin(around * 8));
                const double leaf = std::fabs(b.y - 0.52 - 0.07 * std::sin(around * 8) -
                                              0.085 * std::cos(around * 16)) +
                                    0.05 * std::fabs(std::cos(around * 8));
                const double line =
                    std::min({vine - 0.012, leaf - 0.048, std::fabs(b.y - 0.74) - 0.018,
                              std::fabs(b.y - 0.30) - 0.018, std::fabs(b.y - 0.79) - 0.006});
                colour = mix(colour, srgb(0x1C3E94), smoothstep(0.008, -0.008, line));
            }
            return {.colour = colour, .gloss = 0.55, .polish = 120};
        }
        case stem:
            return {.colour = srgb(0x3C2614), .gloss = 0.1, .polish = 15};
        case cloth: {
            const Vec3 q = turned(p - Vec3{1.55, 0.05, 0.35}, 0.22);
            const double weave = 0.92 + 0.08 * std::sin(q.x * 260) * std::sin(q.z * 260);
            const double hem = std::max(std::fabs(q.x) / 1.15, std::fabs(q.z) / 0.78);
            const bool stripe = hem > 0.84 && hem < 0.90;
            return {.colour = (stripe ? srgb(0xA02A32) : srgb(0xE6DFD0)) * weave,
                    .gloss = 0.02,
                    .polish = 8};
        }
        default:
            return fruitSkin(p, solid);
    }
}

}  // namespace

Scene fruit(double aspect) {
    const Solids scene{
        .nearest = nearestFruit,
        .material = fruitMaterial,
        .sky =
            [](Vec3 d) {
                // The mirrored room: dark, with one tall window to the left.
                const Vec3 toWindow = normalized({-0.80, 0.50, 0.42});
                const Vec3 side = normalized(cross(toWindow, {0, 1, 0}));
                const Vec3 up = cross(side, toWindow);
                const double ahead = dot(d, toWindow);
                const double u = dot(d, side) / std::max(ahead, 0.01);
                const double v = dot(d, up) / std::max(ahead, 0.01);
                const bool pane = ahead > 0 && std::fabs(u) < 0.32 && std::fabs(v) < 0.45 &&
                                  std::fabs(u) > 0.02 && std::fabs(v) > 0.02;
                return pane ? Vec3{2.4, 2.5, 2.6}
                            : mix(srgb(0x1E1A16), srgb(0x4A4640), saturate(0.5 + 0.5 * d.y));
            },
        .lamp = normalized({-0.80, 0.62, 0.42}),
        .lampColour = {1.18, 1.10, 0.96},
        .skyLight = {0.20, 0.21, 0.24},
        .groundLight = {0.10, 0.07, 0.05},
        .softness = 6,
        .reach = 20,
        .step = 0.75,
    };
    return [=](double x, double y) {
        const Vec3 eye{0.25, 2.15, 6.6};
        const Vec3 seen = scene.look(eye, eyeRay(eye, {0.02, 0.66, 0}, 1.78, aspect, x, y));
        const Vec2 off{x / aspect - 0.5, y - 0.5};
        return seen * (1.12 - 0.9 * dot(off, off));
    };
}

}  // namespace draw
