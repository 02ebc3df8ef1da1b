#include <array>

#include "letters.h"
#include "noise.h"
#include "scenes.h"
#include "solids.h"

// A doll of turned wood on a shelf, with letter blocks, marbles and a strip of greys behind it.
// It is the picture on which the program previews functions, so it has a little of everything
// that functions act on: skin, saturated colours, neutral greys, gradients, edges and lettering.

namespace draw {

namespace {

enum Solid { shelf, wall, doll, lowerBlock, upperBlock, greyBall, firstMarble };

constexpr Vec3 dollAt{-0.62, 0, 0};
constexpr double dollTurn = 0.12;
constexpr double frontOfShelf = 1.45;

struct Marble {
    Vec3 at;
    double radius;
    int colour;
};
constexpr std::array<Marble, 6> marbles{{{{-1.28, 0.15, 1.0}, 0.15, 0xF5C400},
                                         {{-0.92, 0.12, 1.22}, 0.12, 0x17A34A},
                                         {{-0.20, 0.13, 1.14}, 0.13, 0xD91E2E},
                                         {{0.14, 0.11, 1.26}, 0.11, 0x18B5D8},
                                         {{1.16, 0.15, 0.98}, 0.15, 0x7A2BC2},
                                         {{0.88, 0.11, 1.24}, 0.11, 0xE64CA0}}};

Vec3 inLowerBlock(Vec3 p) { return turned(p - Vec3{0.72, 0.40, 0.05}, 0.32); }
Vec3 inUpperBlock(Vec3 p) { return turned(p - Vec3{0.64, 1.12, 0.02}, -0.28); }

double dollDistance(Vec3 p) {
    p = turned(p - dollAt, dollTurn);
    const double body = ellipsoid(p - Vec3{0, 0.62, 0}, {0.66, 0.82, 0.66});
    const double head = ellipsoid(p - Vec3{0, 1.58, 0}, {0.48, 0.50, 0.48});
    const double whole = smoothUnion(body, head, 0.22);
    return std::max(whole, -p.y);
}

Nearest nearestToy(Vec3 p) {
    Nearest n;
    n.offer(std::max(p.y, p.z - frontOfShelf), shelf);
    n.offer(p.z + 1.5, wall);
    n.offer(dollDistance(p), doll);
    n.offer(roundedBox(inLowerBlock(p), {0.40, 0.40, 0.40}, 0.04), lowerBlock);
    n.offer(roundedBox(inUpperBlock(p), {0.32, 0.32, 0.32}, 0.035), upperBlock);
    n.offer(length(p - Vec3{0.40, 0.25, 0.82}) - 0.25, greyBall);
    for (size_t i = 0; i < marbles.size(); ++i) {
        n.offer(length(p - marbles[i].at) - marbles[i].radius, firstMarble + static_cast<int>(i));
    }
    return n;
}

/// A blossom of five petals around a point, as 0 to 1.
double blossom(Vec2 p, Vec2 at, double size) {
    const Vec2 q = p - at;
    const double angle = std::atan2(q.y, q.x);
    return smoothstep(0.012, -0.012, length(q) - size * (0.72 + 0.28 * std::cos(5 * angle)));
}

Vec3 face(Vec3 skin, Vec2 p) {
    Vec3 colour = skin;
    const double left = std::fabs(p.x);
    const Vec2 half{left, p.y};
    colour =
        mix(colour, srgb(0xE8604C), 0.55 * smoothstep(0.13, 0.0, length(half - Vec2{0.19, -0.10})));
    // Hair, parted in the middle.
    const double hair = p.y - (0.235 - 1.1 * left * left);
    const double parting = smoothstep(0.0, 0.22, left) * 0.11;
    const double strands = 0.75 + 0.5 * noise(half.x * 60, half.y * 14, 5);
    colour =
        mix(colour, srgb(0x4A2A18) * strands, smoothstep(-0.012, 0.012, hair + parting - 0.02));
    // Eyes: white, iris, pupil, light, lashes; brows above.
    const Vec2 eye = half - Vec2{0.135, 0.015};
    const double lid = length(Vec2{eye.x, eye.y * 1.55}) - 0.075;
    colour = mix(colour, srgb(0xFAF6EF), smoothstep(0.006, -0.006, lid));
    const double iris = length(eye - Vec2{-0.004, 0.0});
    const double inEye = smoothstep(0.006, -0.006, lid);
    colour = mix(colour, srgb(0x2E6FB0), inEye * smoothstep(0.050, 0.042, iris));
    colour = mix(colour, srgb(0x14100E), inEye * smoothstep(0.027, 0.020, iris));
    colour = mix(colour, srgb(0xFFFFFF),
                 inEye * smoothstep(0.014, 0.007, length(eye - Vec2{0.014, 0.018})));
    const double lash = std::fabs(lid) + (eye.y < 0.005 ? 0.02 : 0.0);
    colour = mix(colour, srgb(0x2B1710), smoothstep(0.016, 0.006, lash));
    const double brow = std::fabs(eye.y - 0.115 + 2.6 * (eye.x - 0.01) * (eye.x - 0.01)) +
                        std::max(0.0, std::fabs(eye.x) - 0.075);
    colour = mix(colour, srgb(0x3C2114), smoothstep(0.020, 0.008, brow));
    // Nose and mouth.
    colour = mix(
        colour, srgb(0xC98462),
        smoothstep(0.012, 0.004,
                   std::fabs(length(Vec2{p.x, p.y + 0.085}) - 0.030) + std::max(0.0, p.y + 0.092)));
    const double smile = p.y + 0.200 - 3.2 * left * left;
    const double lips = (smile > 0 ? 1.3 : 1.0) * std::fabs(smile) + 0.28 * left;
    colour = mix(colour, srgb(0xC4202F), smoothstep(0.034, 0.024, lips));
    colour = mix(colour, srgb(0x7C0F1C),
                 smoothstep(0.007, 0.002, std::fabs(smile) + std::max(0.0, left - 0.085)));
    return colour;
}

Material paintedDoll(Vec3 at) {
    const Vec3 p = turned(at - dollAt, dollTurn);
    Material m{.colour = {}, .gloss = 0.55, .polish = 70};
    const double around = std::atan2(p.x, p.z);
    const Vec2 front{p.x, p.y - 1.60};
    const double faceEdge = length(Vec2{front.x / 0.325, front.y / 0.34});
    const Vec3 scarf = srgb(0xC8102E);
    // The scarf falls to a point at the front.
    const double fall = 1.10 - (p.z > 0 ? 0.16 * smoothstep(0.30, 0.0, std::fabs(p.x)) : 0.0);
    if (p.y > fall) {
        // The scarf with its dots, its golden hem, and the face within.
        const Vec2 dots{around * 5.5, p.y * 8};
        const Vec2 cell{fract(dots.x + 0.5 * std::floor(dots.y)) - 0.5, fract(dots.y) - 0.5};
        m.colour = mix(scarf, srgb(0xF7D774), smoothstep(0.20, 0.13, length(cell)));
        if (p.y < fall + 0.035) m.colour = srgb(0xE0A526);
        if (p.z > 0 && faceEdge < 1.0) m.colour = face(srgb(0xF3C39C), front);
        if (p.z > 0 && faceEdge >= 1.0 && faceEdge < 1.12) m.colour = srgb(0xE0A526);
    } else {
        // Dress in green, an apron with blossoms in front, bands below.
        m.colour = srgb(0x0E7A4F);
        const double leaf = fract(around * 3.2 + p.y * 2.0) + fract(around * 3.2 - p.y * 2.0);
        m.colour = mix(m.colour, srgb(0x0A5538), smoothstep(0.95, 1.05, leaf));
        const Vec2 apron{p.x, p.y - 0.62};
        const double apronEdge = length(Vec2{apron.x / 0.44, apron.y / 0.46});
        if (p.z > 0 && apronEdge < 1.08) m.colour = srgb(0xE0A526);
        if (p.z > 0 && apronEdge < 1.0) {
            m.colour = srgb(0xFBF3E2);
            const auto flower = [&](Vec2 where, double size, int petals, int heart) {
                m.colour = mix(m.colour, srgb(petals), blossom(apron, where, size));
                m.colour = mix(m.colour, srgb(heart),
                               smoothstep(0.01, -0.01, length(apron - where) - size * 0.28));
            };
            for (const double side : {-1.0, 1.0}) {
                const Vec2 q{apron.x * side, apron.y};
                const double stem = std::fabs(q.x - 0.10 - 0.25 * (q.y + 0.25) * (q.y + 0.25));
                if (q.y > -0.30 && q.y < 0.16) {
                    m.colour = mix(m.colour, srgb(0x2E8B57), smoothstep(0.018, 0.010, stem));
                }
                flower({0.26 * side, -0.05}, 0.095, 0x3566C8, 0xF5C400);
                flower({0.17 * side, 0.22}, 0.085, 0xF08A24, 0x7A2BC2);
            }
            flower({0, 0.02}, 0.155, 0xD91E2E, 0xF5C400);
            flower({0, -0.29}, 0.085, 0xE64CA0, 0xFBF3E2);
        }
        if (p.y < 0.20) m.colour = srgb(p.y > 0.15 ? 0xE0A526 : 0xC8102E);
        if (p.y < 0.09) m.colour = srgb(0x1C2E6E);
    }
    return m;
}

/// A block's face: bare wood, a painted frame, a letter.
Material block(Vec3 p, double half, std::string_view letters, int paintColour) {
    const Vec3 a{std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)};
    Vec2 on;
    char letter = letters[0];
    if (a.z >= a.x && a.z >= a.y) {
        on = {p.z > 0 ? p.x : -p.x, p.y};
    } else if (a.x >= a.y) {
        on = {p.x > 0 ? -p.z : p.z, p.y};
        letter = letters[1];
    } else {
        on = {p.x, -p.z};
        letter = letters[2];
    }
    const double grain = fractal(on.x * 6, on.y * 60, 3, 21);
    const Vec3 wood = mix(srgb(0xEBCB97), srgb(0xC99A5B), grain);
    const double edge = std::max(std::fabs(on.x), std::fabs(on.y)) / half;
    const double frame = smoothstep(0.70, 0.72, edge) * smoothstep(0.90, 0.88, edge);
    const double cell = half * 0.82;
    const double stroke =
        toLetter(letter, {(on.x + 0.5 * cell) / cell, (on.y + 0.7 * cell) / cell});
    const double inked = std::max(frame, smoothstep(0.115, 0.085, stroke));
    return {.colour = mix(wood, srgb(paintColour), inked), .gloss = 0.22, .polish = 25};
}

Material shelfBoard(Vec3 p) {
    const double grain = fractal(p.x * 1.5, p.z * 18 + p.y * 18, 4, 3);
    Vec3 colour = mix(srgb(0x8A5A35), srgb(0x5B361D), grain);
    if (p.y > -0.02) {
        // A checked runner lies on it.
        const double weave = 0.93 + 0.07 * std::sin(p.x * 150) * std::sin(p.z * 150);
        const bool across = fract(p.x * 3.4) < 0.5;
        const bool along = fract(p.z * 3.4) < 0.5;
        const Vec3 white = srgb(0xF4F1EA);
        const Vec3 blue = srgb(0x3E64A8);
        if (p.z > -0.9 && p.z < 1.32) {
            colour = mix(white, blue, 0.5 * across + 0.5 * along) * weave;
        }
        return {.colour = colour, .gloss = 0.03, .polish = 10};
    }
    // The picture ends just below the foot of the letters.
    const double size = 0.1;
    const double ink = toLine("TESSARINE", {(p.x + 0.53) / size, (p.y + 0.163) / size}, 1.32);
    colour = mix(colour, srgb(0xF2D9A0), smoothstep(0.15, 0.09, ink));
    return {.colour = colour, .gloss = 0.15, .polish = 20};
}

Material paintedWall(Vec3 p) {
    // A gradient over the whole wall, and a framed strip of nine greys from white to black.
    Vec3 colour = mix(srgb(0xF7C98F), srgb(0x4E93C7), smoothstep(0.3, 3.2, p.y + 0.25 * p.x));
    const Vec2 strip{p.x + 0.08, p.y - 2.02};
    if (strip.x > -0.04 && strip.x < 1.84 && std::fabs(strip.y) < 0.24) colour = srgb(0x2A211C);
    if (strip.x > 0 && strip.x < 1.80 && std::fabs(strip.y) < 0.20) {
        const double level = 1 - std::floor(strip.x / 0.20) / 8;
        const double linear = std::pow(level, 2.2) * 0.92;
        colour = {linear, linear, linear};
    }
    return {.colour = colour, .gloss = 0, .polish = 10};
}

Material toyMaterial(Vec3 p, Vec3, int solid) {
    switch (solid) {
        case shelf:
            return shelfBoard(p);
        case wall:
            return paintedWall(p);
        case doll:
            return paintedDoll(p);
        case lowerBlock:
            return block(inLowerBlock(p), 0.40, "ACB", 0x1F4FB4);
        case upperBlock:
            return block(inUpperBlock(p), 0.32, "BRT", 0xC8102E);
        case greyBall:
            return {.colour = {0.2, 0.2, 0.2}, .gloss = 0.35, .polish = 50};
        default: {
            const Marble& marble = marbles[static_cast<size_t>(solid - firstMarble)];
            return {.colour = srgb(marble.colour), .gloss = 0.9, .polish = 160, .glow = 0.5};
        }
    }
}

}  // namespace

Scene toys(double aspect) {
    const Solids scene{
        .nearest = nearestToy,
        .material = toyMaterial,
        .sky = [](Vec3 d) { return mix(srgb(0xE8DCC8), srgb(0xBFD9F2), saturate(0.5 + d.y)); },
        .lamp = normalized({-0.55, 0.95, 0.75}),
        .lampColour = {0.80, 0.76, 0.68},
        .skyLight = {0.42, 0.46, 0.52},
        .groundLight = {0.22, 0.18, 0.14},
        .softness = 9,
        .reach = 20,
        .step = 0.85,
    };
    return [=](double x, double y) {
        const Vec3 eye{0.15, 1.55, 6.4};
        return scene.look(eye, eyeRay(eye, {0.02, 0.845, 0}, 2.12, aspect, x, y));
    };
}

}  // namespace draw
