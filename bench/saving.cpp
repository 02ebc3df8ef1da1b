#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>

#include "imagefiles/format_table.h"
#include "imagefiles/image_files.h"

// Every output format on a picture of 12 megapixels, file included.

namespace {

using namespace tessarine;

/// Waves under noise: as many colours as a photograph and none of them alike for long.
Bitmap testPicture() {
    constexpr int32_t width = 4000;
    constexpr int32_t height = 3000;
    Bitmap picture(width, height);
    uint32_t state = 1;
    for (int32_t y = 0; y < height; ++y) {
        Pixel* row = picture.writableRow(y);
        for (int32_t x = 0; x < width; ++x) {
            state = state * 1664525U + 1013904223U;
            const auto noise = static_cast<int32_t>(state >> 27);
            const int32_t wave = 60 + (x >> 5) + ((x + y) & 511) / 12;
            row[x] = {static_cast<uint8_t>(wave + noise),
                      static_cast<uint8_t>(wave / 2 + (y >> 6) + noise),
                      static_cast<uint8_t>(200 - wave / 2 + noise), 0};
        }
    }
    return picture;
}

void save(benchmark::State& state, int16_t row) {
    PictureHolder holder;
    holder.setPicture(testPicture());
    mFormat format;
    const std::string extension(formatTable()[static_cast<size_t>(row)].extension);
    const std::string path =
        std::filesystem::temp_directory_path() / ("tessarine-bench." + extension);
    for (auto _ : state) {
        const SaveOutcome outcome = SaveImageFile(format, holder, extension, path, true, row);
        if (outcome.status != SaveOutcome::Status::saved)
            state.SkipWithError(outcome.message.c_str());
        state.counters["MB"] = static_cast<double>(outcome.bytes) / 1e6;
    }
    std::filesystem::remove(path);
}

}  // namespace

int main(int argc, char** argv) {
    for (int16_t row = 0; row < formatRowCount; ++row) {
        const FormatRow& format = formatTable()[static_cast<size_t>(row)];
        benchmark::RegisterBenchmark(("save/" + std::string(format.shortName)).c_str(), save, row)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
