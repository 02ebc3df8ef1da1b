#pragma once

#include <algorithm>
#include <cmath>

// Small vectors for the drawing program: points, directions and linear colours (red, green, blue).

namespace draw {

constexpr double pi = 3.14159265358979323846;

struct Vec2 {
    double x = 0;
    double y = 0;
};
inline Vec2 operator+(Vec2 a, Vec2 b) { return {a.x + b.x, a.y + b.y}; }
inline Vec2 operator-(Vec2 a, Vec2 b) { return {a.x - b.x, a.y - b.y}; }
inline Vec2 operator*(Vec2 a, double k) { return {a.x * k, a.y * k}; }
inline double dot(Vec2 a, Vec2 b) { return a.x * b.x + a.y * b.y; }
inline double length(Vec2 a) { return std::sqrt(dot(a, a)); }
inline Vec2 rotated(Vec2 a, double angle) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {a.x * c - a.y * s, a.x * s + a.y * c};
}

struct Vec3 {
    double x = 0;
    double y = 0;
    double z = 0;
};
inline Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator-(Vec3 a) { return {-a.x, -a.y, -a.z}; }
inline Vec3 operator*(Vec3 a, Vec3 b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
inline Vec3 operator*(Vec3 a, double k) { return {a.x * k, a.y * k, a.z * k}; }
inline Vec3 operator*(double k, Vec3 a) { return a * k; }
inline Vec3 operator/(Vec3 a, double k) { return a * (1 / k); }
inline Vec3& operator+=(Vec3& a, Vec3 b) { return a = a + b; }
inline double dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3 cross(Vec3 a, Vec3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(Vec3 a) { return std::sqrt(dot(a, a)); }
inline Vec3 normalized(Vec3 a) { return a / length(a); }
inline Vec3 reflected(Vec3 d, Vec3 n) { return d - n * (2 * dot(d, n)); }

inline double saturate(double v) { return std::clamp(v, 0.0, 1.0); }
inline double mix(double a, double b, double t) { return a + (b - a) * t; }
inline Vec3 mix(Vec3 a, Vec3 b, double t) { return a + (b - a) * t; }
/// 0 below `from`, 1 above `to`, smooth in between; the ends may stand in either order.
inline double smoothstep(double from, double to, double v) {
    const double t = saturate((v - from) / (to - from));
    return t * t * (3 - 2 * t);
}
inline double fract(double v) { return v - std::floor(v); }

/// A colour as it is written in web pages (0xRRGGBB), as linear light.
inline Vec3 srgb(int rgb) {
    const auto linear = [](int byte) { return std::pow(byte / 255.0, 2.2); };
    return {linear(rgb >> 16 & 255), linear(rgb >> 8 & 255), linear(rgb & 255)};
}

}  // namespace draw
