#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "scenes.h"

// Draws the sample pictures: draw_samples FOLDER [NAME...]. Without a name, all of them.

namespace {

struct Sample {
    std::string_view name;
    draw::Size size;
    int grid;      ///< looks a pixel, in each direction
    double grain;  ///< levels
    draw::Scene (*scene)(double aspect);
};

constexpr Sample samples[] = {
    {"sample", {200, 174}, 8, 0, draw::toys},  // assets/sample.ppm
    {"mountains", {3600, 2400}, 2, 1.0, draw::mountains},
    {"fruit", {1080, 810}, 3, 0, draw::fruit},
    {"sea", {1440, 960}, 3, 1.0, draw::seaAtDusk},
    {"aurora", {960, 640}, 3, 0.5, draw::aurora},
    {"milky-way", {960, 720}, 3, 1.0, draw::milkyWay},
    {"drops", {720, 540}, 4, 0, draw::drops},
    {"rose-window", {560, 560}, 4, 0, draw::stainedGlass},
    {"tartan", {600, 450}, 4, 0, draw::tartan},
    {"dunes", {640, 400}, 4, 0, draw::dunes},
    {"toys", {800, 696}, 3, 0, draw::toys},
};

}  // namespace

int main(int argc, char** argv) try {
    std::vector<std::string_view> words(argv + 1, argv + argc);
    const bool quick = std::erase(words, "--quick") > 0;
    if (words.empty() || words[0].starts_with('-')) {
        std::puts(
            "usage: draw_samples [--quick] FOLDER [NAME...]\n"
            "Writes FOLDER/NAME.ppm for each NAME, or for all; with --quick, small and coarse.");
        for (const Sample& s : samples)
            std::printf("  %s\n", std::string(s.name).c_str());
        return words.empty() ? 2 : 0;
    }
    for (const Sample& s : samples) {
        if (words.size() > 1 && std::find(words.begin() + 1, words.end(), s.name) == words.end()) {
            continue;
        }
        const double aspect = static_cast<double>(s.size.width) / s.size.height;
        const draw::Size size = quick ? draw::Size{600, static_cast<int>(600 / aspect)} : s.size;
        draw::paint(std::string(words[0]) + "/" + std::string(s.name) + ".ppm", size,
                    quick ? 1 : s.grid, s.scene(aspect), s.grain);
        std::printf("%s\n", std::string(s.name).c_str());
        std::fflush(stdout);
    }
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "draw_samples: %s\n", failure.what());
    return 1;
}
