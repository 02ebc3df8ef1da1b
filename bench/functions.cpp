#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "batch/batch.h"

// Every function of the catalogue as its sheet opens, on a picture of 12 megapixels, measured
// against copying the picture's buffer: memory is the bound that a filter can reach. The copy goes
// to memory in use; a function's result is fresh memory, which the system hands out page by page.

namespace {

using namespace tessarine;

constexpr int32_t width = 4000;
constexpr int32_t height = 3000;
constexpr double pixels = double{width} * height;

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

/// The usual lines, and at the end a table: nanoseconds a pixel, and each time as a multiple of
/// the copy's.
class RatioTable : public benchmark::ConsoleReporter {
  public:
    RatioTable() : ConsoleReporter(isatty(STDOUT_FILENO) != 0 ? OO_ColorTabular : OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                lines_.push_back({run.run_name.function_name, run.GetAdjustedRealTime()});
    }
    void Finalize() override {
        double copy = 0;
        for (const Line& line : lines_)
            if (line.name == "memcpy") copy = line.milliseconds;
        std::printf("\n%-24s %10s %10s %10s\n", "12 megapixels", "ms", "ns/pixel", "x memcpy");
        for (const Line& line : lines_) {
            std::printf("%-24s %10.2f %10.3f", line.name.c_str(), line.milliseconds,
                        line.milliseconds * 1e6 / pixels);
            // A filter of names may leave the copy out.
            if (copy > 0) std::printf(" %10.2f", line.milliseconds / copy);
            std::printf("\n");
        }
    }

  private:
    struct Line {
        std::string name;
        double milliseconds;
    };
    std::vector<Line> lines_;
};

/// A program without a screen whose picture is `picture` at each call of a function.
class Workshop {
  public:
    explicit Workshop(PixelBuffer picture) : picture_(std::move(picture)) {
        batch_.cFilter.timeGetTime = [] { return 0U; };
    }

    /// Sets the function's sheet, which acts on the sample.
    void choose(const FunctionDef& function) {
        batch_.SetPicture(batch_.iOri);
        batch_.cFilter.Bits(batch_.workBits);
        batch_.cFilter.BitsRegion(batch_.workRegion.RegionMain());
        batch_.SelectNode(function.treeIndex);
        // Functions of a point act on the middle of the picture.
        batch_.pickRelX = batch_.pickRelY = 0.5F;
    }
    void takeIn() {
        batch_.workWidth = width;
        batch_.workHeight = height;
        batch_.iSrc.setSize(width, height);
        batch_.workBits = picture_;
        batch_.cFilter.Bits(picture_);
        batch_.workRegion.Init(0, 0, width, height);
        batch_.cFilter.BitsRegion(batch_.workRegion.RegionMain());
    }
    PixelBuffer apply(const FunctionDef& function) { return function.call(batch_, CallSite::row); }

  private:
    SilentPlatform platform_;
    cBatch batch_{platform_};
    PixelBuffer picture_;
};

void measure(benchmark::State& state, Workshop& workshop, const FunctionDef& function) {
    workshop.choose(function);
    for (auto _ : state) {
        state.PauseTiming();
        workshop.takeIn();
        state.ResumeTiming();
        benchmark::DoNotOptimize(workshop.apply(function));
    }
}

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

    Workshop workshop(picture);
    for (const TreeNode& node : catalogueTree()) {
        const FunctionDef* function = findFunction(node.functionId);
        if (function == nullptr) continue;
        benchmark::RegisterBenchmark(
            std::string(function->name).c_str(),
            [&workshop, function](benchmark::State& state) { measure(state, workshop, *function); })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    RatioTable table;
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
