#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "pixels/bit_filter.h"

// The tone members on a picture of 12 megapixels, measured against copying its buffer: memory is
// the bound that a filter of this kind can reach. The copy goes to memory in use; a filter's result
// is fresh memory, which the system hands out page by page.

namespace {

using tessarine::cBitFilter;
using tessarine::Pixel;
using tessarine::PixelBuffer;

constexpr int32_t width = 4000;
constexpr int32_t height = 3000;

/// A picture with every level in every channel, no two neighbours alike.
PixelBuffer testPicture() {
    PixelBuffer picture(width, height);
    Pixel* block = picture.writableBlock();
    uint32_t state = 1;
    for (int32_t y = 0; y < height; ++y) {
        Pixel* row = block + picture.offsetOfRow(y);
        for (int32_t x = 0; x < width; ++x) {
            state = state * 1664525U + 1013904223U;
            row[x] = {static_cast<uint8_t>(x / 16 + (state >> 29)),
                      static_cast<uint8_t>(y / 12 + (state >> 28)),
                      static_cast<uint8_t>((x + y) / 28 + (state >> 29)), 0};
        }
    }
    return picture;
}

struct Member {
    std::string name;
    std::function<PixelBuffer(cBitFilter&)> call;
};

std::vector<Member> members() {
    return {
        {"BRIGHTNESS 40", [](cBitFilter& f) { return f.BRIGHTNESS(40); }},
        {"Contrast 40", [](cBitFilter& f) { return f.Contrast(40); }},
        {"GammaCorrection 30", [](cBitFilter& f) { return f.GammaCorrection(30); }},
        {"Equalize", [](cBitFilter& f) { return f.Equalize(); }},
        {"SATURATION 60", [](cBitFilter& f) { return f.SATURATION(60); }},
        {"Invert", [](cBitFilter& f) { return f.Invert(); }},
        {"GreyScale", [](cBitFilter& f) { return f.GreyScale(); }},
        {"Threshold 128", [](cBitFilter& f) { return f.Threshold(128); }},
        {"Reduction 31", [](cBitFilter& f) { return f.Reduction(31); }},
        {"KillChannel R", [](cBitFilter& f) { return f.KillChannel(true, false, false); }},
        {"ShiftRGB", [](cBitFilter& f) { return f.ShiftRGB(12, 3, -10); }},
        {"SwapRGB",
         [](cBitFilter& f) { return f.SwapRGB(0, 1, 2, true, false, false, false, false, false); }},
        {"SwapBanks 3", [](cBitFilter& f) { return f.SwapBanks(3); }},
    };
}

/// The usual lines, and at the end each time as a multiple of the copy's.
class RatioTable : public benchmark::ConsoleReporter {
  public:
    RatioTable() : ConsoleReporter(isatty(STDOUT_FILENO) != 0 ? OO_ColorTabular : OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                lines_.push_back({run.benchmark_name(), run.GetAdjustedRealTime()});
            }
        }
    }
    void Finalize() override {
        double copy = 0;
        for (const Line& line : lines_) {
            if (line.name.starts_with("memcpy")) copy = line.milliseconds;
        }
        if (copy == 0) return;
        std::printf("\n%-24s %10s %10s\n", "12 megapixels", "ms", "x memcpy");
        for (const Line& line : lines_) {
            std::printf("%-24s %10.2f %10.2f\n", line.name.substr(0, line.name.find('/')).c_str(),
                        line.milliseconds, line.milliseconds / copy);
        }
    }

  private:
    struct Line {
        std::string name;
        double milliseconds;
    };
    std::vector<Line> lines_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;

    const PixelBuffer picture = testPicture();
    const auto target = std::make_unique<Pixel[]>(picture.pixelCount());
    benchmark::RegisterBenchmark("memcpy",
                                 [&](benchmark::State& state) {
                                     for (auto _ : state) {
                                         std::memcpy(target.get(), picture.block(),
                                                     picture.byteCount());
                                         benchmark::ClobberMemory();
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();

    cBitFilter filter;
    filter.Bits(picture);
    const tessarine::RegionHandle whole =
        std::make_shared<const tessarine::Region>(tessarine::Rect{0, 0, width, height});
    filter.BitsRegion(whole);
    for (const Member& member : members()) {
        benchmark::RegisterBenchmark(member.name.c_str(),
                                     [&filter, member](benchmark::State& state) {
                                         for (auto _ : state)
                                             benchmark::DoNotOptimize(member.call(filter));
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    RatioTable table;
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
