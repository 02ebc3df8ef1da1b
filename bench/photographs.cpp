#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <turbojpeg.h>
#include <vector>

// Draws the JPEGs that whole runs are measured on: soft shapes under a fine grain, as photographs
// have them, the same ones each time.

namespace {

/// A soft disc of light.
struct Shape {
    float x, y, radius;
    std::array<float, 3> colour;  ///< what its middle adds to blue, green and red
};

class Dice {
  public:
    explicit Dice(uint32_t seed) : state_(seed * 2654435761U + 1) {}
    uint32_t next() { return state_ = state_ * 1664525U + 1013904223U; }
    /// From 0 up to 1.
    float part() { return static_cast<float>(next() >> 8) / 16777216.0F; }

  private:
    uint32_t state_;
};

std::vector<uint8_t> draw(int width, int height, uint32_t number) {
    Dice dice(number);
    std::vector<Shape> shapes(24);
    for (Shape& shape : shapes) {
        shape = {dice.part() * static_cast<float>(width),
                 dice.part() * static_cast<float>(height),
                 (0.03F + 0.25F * dice.part()) * static_cast<float>(width),
                 {}};
        const float light = 160 * dice.part() - 80;
        for (float& channel : shape.colour)
            channel = light + 60 * dice.part() - 30;
    }
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 3);
    uint8_t* pixel = pixels.data();
    std::vector<float> row(static_cast<size_t>(width) * 3);
    for (int y = 0; y < height; ++y) {
        for (size_t i = 0; i < row.size(); ++i)
            row[i] = 118 + 40 * static_cast<float>(y) / static_cast<float>(height);
        for (const Shape& shape : shapes)
            for (int x = 0; x < width; ++x) {
                const float dx = (static_cast<float>(x) - shape.x) / shape.radius;
                const float dy = (static_cast<float>(y) - shape.y) / shape.radius;
                const float away = dx * dx + dy * dy;
                // An edge that is soft but not blurred, as objects have it.
                const float share = 1 / (1 + away * away * away * away);
                for (size_t c = 0; c < 3; ++c)
                    row[static_cast<size_t>(x) * 3 + c] += share * shape.colour[c];
            }
        for (int x = 0; x < width; ++x) {
            // Two throws together lie more often in the middle, as grain does.
            const float grain = 12 * (dice.part() + dice.part() - 1);
            for (size_t c = 0; c < 3; ++c) {
                const float level = row[static_cast<size_t>(x) * 3 + c] + grain;
                *pixel++ = static_cast<uint8_t>(std::fmin(std::fmax(level, 0.0F), 255.0F));
            }
        }
    }
    return pixels;
}

bool save(const std::vector<uint8_t>& pixels, int width, int height, const std::string& path) {
    const std::unique_ptr<void, int (*)(tjhandle)> turbo(tjInitCompress(), &tjDestroy);
    uint8_t* made = nullptr;
    unsigned long bytes = 0;
    if (turbo == nullptr || tjCompress2(turbo.get(), pixels.data(), width, 0, height, TJPF_BGR,
                                        &made, &bytes, TJSAMP_420, 75, TJFLAG_ACCURATEDCT) != 0)
        return false;
    const std::unique_ptr<uint8_t, void (*)(uint8_t*)> jpeg(made, &tjFree);
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(made), static_cast<std::streamsize>(bytes));
    return file.good();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto number = [&](size_t i) { return std::atoi(arguments[i].c_str()); };
    if (arguments.size() != 4 || number(1) < 1 || number(2) < 1 || number(3) < 1) {
        std::fputs(
            "usage: photographs FOLDER COUNT WIDTH HEIGHT\n"
            "Draws FOLDER/0001.jpg and so on, at quality 75.\n",
            stderr);
        return 2;
    }
    for (int i = 1; i <= number(1); ++i) {
        std::array<char, 16> name{};
        std::snprintf(name.data(), name.size(), "/%04d.jpg", i);
        const auto pixels = draw(number(2), number(3), static_cast<uint32_t>(i));
        if (!save(pixels, number(2), number(3), arguments[0] + name.data())) {
            std::fprintf(stderr, "photographs: cannot write %s%s\n", arguments[0].c_str(),
                         name.data());
            return 1;
        }
    }
    return 0;
}
