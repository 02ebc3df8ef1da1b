#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

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
    {"sample", {200, 174}, 8, 0, draw::toys},
};

}  // namespace

int main(int argc, char** argv) try {
    if (argc < 2 || argv[1][0] == '-') {
        std::puts("usage: draw_samples FOLDER [NAME...]\nWrites FOLDER/NAME.ppm. Names:");
        for (const Sample& s : samples)
            std::printf("  %s\n", std::string(s.name).c_str());
        return argc < 2 ? 2 : 0;
    }
    for (const Sample& s : samples) {
        bool wanted = argc == 2;
        for (int i = 2; i < argc; ++i)
            wanted = wanted || s.name == argv[i];
        if (!wanted) continue;
        const double aspect = static_cast<double>(s.size.width) / s.size.height;
        draw::paint(std::string(argv[1]) + "/" + std::string(s.name) + ".ppm", s.size, s.grid,
                    s.scene(aspect), s.grain);
        std::printf("%s\n", std::string(s.name).c_str());
        std::fflush(stdout);
    }
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "draw_samples: %s\n", failure.what());
    return 1;
}
