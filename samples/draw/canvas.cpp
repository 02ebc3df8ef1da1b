#include "canvas.h"

#include <atomic>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "noise.h"

namespace draw {

namespace {

/// Bright light is rolled off towards white instead of being cut.
double toDisplay(double linear) {
    const double shoulder = 0.75;
    double v = std::max(linear, 0.0);
    if (v > shoulder) {
        v = shoulder + (1 - shoulder) * (1 - std::exp(-(v - shoulder) / (1 - shoulder)));
    }
    return 255 * (v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055);
}

uint8_t toByte(double level) { return static_cast<uint8_t>(std::clamp(level + 0.5, 0.0, 255.0)); }

}  // namespace

void paint(const std::string& path, Size size, int grid, const Scene& scene, double grain) {
    std::vector<uint8_t> bytes(size_t{3} * static_cast<size_t>(size.width) *
                               static_cast<size_t>(size.height));
    std::atomic<int> nextRow = 0;
    const auto paintRows = [&] {
        for (int y = nextRow++; y < size.height; y = nextRow++) {
            uint8_t* out =
                &bytes[size_t{3} * static_cast<size_t>(y) * static_cast<size_t>(size.width)];
            for (int x = 0; x < size.width; ++x) {
                Vec3 sum;
                for (int i = 0; i < grid * grid; ++i) {
                    // One look in each cell of the grid, at a place of its own within the cell.
                    const double dx = (i % grid + hash(x, y, 2 * i)) / grid;
                    const double dy = (i / grid + hash(x, y, 2 * i + 1)) / grid;
                    const Vec3 seen = scene((x + dx) / size.height, (y + dy) / size.height);
                    sum += {std::min(seen.x, 4.0), std::min(seen.y, 4.0), std::min(seen.z, 4.0)};
                }
                sum = sum / (grid * grid);
                const double speck = grain * (hash(x, y, -1) + hash(x, y, -2) - 1);
                *out++ = toByte(toDisplay(sum.x) + speck);
                *out++ = toByte(toDisplay(sum.y) + speck);
                *out++ = toByte(toDisplay(sum.z) + speck);
            }
        }
    };
    std::vector<std::jthread> painters;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i) {
        painters.emplace_back(paintRows);
    }
    painters.clear();

    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << size.width << ' ' << size.height << "\n255\n";
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace draw
