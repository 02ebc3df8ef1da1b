#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "arithmetic.h"
#include "codecs.h"

// How fast the measured jobs can be at all: nothing but them, on the same codecs. A thread for each
// core takes pictures one after the other and keeps its buffers; every pass over a picture does as
// much as it can while the rows are at hand. It knows no other job, tries no function on anything
// but whole pictures and trusts every file.

namespace {

using namespace floor_program;

enum class Work { convert, chain, resize, png };

/// What one thread keeps from picture to picture.
struct Workshop {
    JpegCodec jpeg;
    PngWriter png;
    Sharpen sharpen{50};
    Resize resize;
    std::vector<uint8_t> decoded;
    std::vector<uint8_t> sharpened;
    std::vector<uint8_t> resized;
};

View room(std::vector<uint8_t>& bytes, int width, int height) {
    View view{nullptr, width, height};
    const size_t count = view.rowBytes() * static_cast<size_t>(height);
    if (bytes.size() < count) bytes.resize(count);
    view.bytes = bytes.data();
    return view;
}

/// Brightness 20, contrast 20, sharpen 50.
View applyChain(View picture, Workshop& shop) {
    const int mean = brighten(picture, 20);
    const Contrast spread(20, mean);
    const View result = room(shop.sharpened, picture.width, picture.height);
    const int last = picture.height - 1;
    spread(picture.row(0), picture.width);
    std::copy_n(picture.row(0), picture.rowBytes(), result.row(0));
    for (int y = 1; y <= last; ++y) {
        // A row is sharpened when the one below it has its contrast.
        spread(picture.row(y), picture.width);
        if (y > 1)
            shop.sharpen(picture.row(y - 2), picture.row(y - 1), picture.row(y), result.row(y - 1),
                         picture.width);
    }
    std::copy_n(picture.row(last), picture.rowBytes(), result.row(last));
    return result;
}

void process(const std::string& input, const std::string& output, Work work, Workshop& shop) {
    View picture = shop.jpeg.decode(input, shop.decoded);
    if (work == Work::png) return shop.png.encode(picture, output + ".png");
    if (work != Work::convert) picture = applyChain(picture, shop);
    if (work == Work::resize) {
        const int height = static_cast<int>(1200.0 / picture.width * picture.height + 0.5);
        const View smaller = room(shop.resized, 1200, height);
        shop.resize(picture, smaller);
        picture = smaller;
    }
    shop.jpeg.encode(picture, output + ".jpg");
}

int usage() {
    std::fputs(
        "usage: floor convert|chain|resize|png THREADS OUT-FOLDER JPEG...\n"
        "Writes OUT-FOLDER/Sample1.jpg and so on, or .png.\n",
        stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 4) return usage();
    const std::vector<std::string> names{"convert", "chain", "resize", "png"};
    const auto name = std::find(names.begin(), names.end(), arguments[0]);
    const int threads = std::atoi(arguments[1].c_str());
    if (name == names.end() || threads < 1) return usage();
    const auto work = static_cast<Work>(name - names.begin());
    const std::string folder = arguments[2] + "/Sample";

    std::atomic<size_t> next{3};
    std::atomic<int> failures{0};
    const auto takeTurns = [&] {
        try {
            Workshop shop;
            for (size_t i = next++; i < arguments.size(); i = next++)
                process(arguments[i], folder + std::to_string(i - 2), work, shop);
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "floor: %s\n", failure.what());
            ++failures;
        }
    };
    std::vector<std::jthread> others;
    for (int i = 1; i < threads; ++i)
        others.emplace_back(takeTurns);
    takeTurns();
    others.clear();
    return failures == 0 ? 0 : 1;
}
