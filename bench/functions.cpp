#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "batch/batch.h"
#include "families.h"
#include "pixels/heap.h"
#include "pixels/threads.h"
#include "runner/function_arguments.h"
#include "timing.h"

// Every function of the catalogue on 12 megapixels against the copy of the picture: as its sheet
// opens, and with the inputs that its example in the manual has, where it has something to do.

namespace {

using namespace tessarine;
using namespace tessarine::bench;

/// The inputs for the second measurement. Sizes of the example are those of its small picture.
std::string argumentsOf(const FunctionDef& function) {
    if (function.name == "Resize") return "Width=3000";
    return std::string(function.example);
}

/// A program without a screen that runs one function over the picture, again and again.
class Workshop {
  public:
    Workshop(const PixelBuffer& picture, const FunctionDef& function, const std::string& arguments)
        : picture_(picture), function_(function) {
        std::string chosen(function.name);
        if (!arguments.empty()) chosen += ":" + arguments;
        CommandLine line;
        line.functions = {{FunctionSource::Kind::apply, chosen}};
        addFunctions(batch_, line);
        batch_.cFilter.timeGetTime = [] { return 0U; };
    }

    void takeIn() {
        batch_.workBits = PixelBuffer();
        batch_.workWidth = pictureWidth;
        batch_.workHeight = pictureHeight;
        batch_.iSrc.setSize(pictureWidth, pictureHeight);
        batch_.workBits = picture_;
        batch_.cFilter.Bits(picture_);
        batch_.workRegion.Init(0, 0, pictureWidth, pictureHeight);
        batch_.cFilter.BitsRegion(batch_.workRegion.RegionMain());
    }
    void apply() { batch_.ApplyRow(static_cast<int16_t>(function_.id), 1, true); }
    double resultPixels() const {
        return double(batch_.workBits.width()) * batch_.workBits.height();
    }

  private:
    SilentPlatform platform_;
    cBatch batch_{platform_};
    PixelBuffer picture_;
    const FunctionDef& function_;
};

/// A function on one thread.
Timing measure(Workshop& workshop, const FunctionDef& function, int runs, Copy& copy) {
    setFilterThreads(1);
    const Timing timing = timingOf(
        runs, copy, [&] { workshop.takeIn(); }, [&] { workshop.apply(); });
    // What goes by the pixels of the result is measured by those.
    const bool byResult = function.name == "Resize" || function.name == "Rotate Intelligently";
    const double share = byResult ? workshop.resultPixels() / picturePixels : 1;
    return {timing.milliseconds, timing.copies / share};
}

/// How many times as fast two threads are as one.
double speedUp(Workshop& workshop, int runs) {
    const auto withThreads = [&](int32_t threads) {
        return [&workshop, threads](double (*clock)()) {
            setFilterThreads(threads);
            workshop.takeIn();
            return millisecondsOf(clock, [&] { workshop.apply(); });
        };
    };
    return ratioOf(runs, &wallMilliseconds, withThreads(1), withThreads(2));
}

Timing measureDiffusion(const PixelBuffer& picture, int runs, Copy& copy) {
    setFilterThreads(1);
    cBitRegion region;
    region.Init(0, 0, pictureWidth, pictureHeight);
    cBitFilter filter;
    filter.timeGetTime = [] { return 0U; };
    filter.Bits(picture);
    filter.BitsRegion(region.RegionMain());
    constexpr int32_t usualShare = 42;
    return timingOf(
        runs, copy, [] {}, [&] { filter.StuckiBW(usualShare); });
}

class Table {
  public:
    Table() {
        std::printf("%-22s %8s %8s %8s %10s  %s\n", "12 megapixels", "ms", "copies", "opening",
                    "2 threads", "limit");
    }
    void add(const std::string& name, Timing opening, Timing example, double faster) {
        const Family& family = familyOf(name);
        // Out of range, contrast is no look-up any more, and its limit does not hold. The size that
        // resizing has at first is a stamp's, of which nothing can be told.
        double judged = std::max(opening.copies, example.copies);
        if (name == "Contrast") judged = opening.copies;
        if (name == "Resize") judged = example.copies;
        std::printf("%-22s %8.2f %8.2f %8.2f %9.2fx  %g%s\n", name.c_str(), example.milliseconds,
                    example.copies, opening.copies, faster, family.limit,
                    judged > family.limit ? "  MISSED" : "");
        std::fflush(stdout);
        rows_.push_back({{"name", name},
                         {"family", family.name},
                         {"limit", family.limit},
                         {"met", judged <= family.limit},
                         {"milliseconds", example.milliseconds},
                         {"copies", example.copies},
                         {"opening", opening.copies},
                         {"two_threads", faster}});
    }
    const nlohmann::json& rows() const { return rows_; }

  private:
    nlohmann::json rows_ = nlohmann::json::array();
};

int run(int runs, const std::string& jsonFile, const std::string& filter) {
    keepFreedMemory();
    const PixelBuffer picture = testPicture();
    Copy copy(picture);
    std::vector<double> copies;
    Table table;
    for (const TreeNode& node : catalogueTree()) {
        const FunctionDef* function = findFunction(node.functionId);
        if (function == nullptr || function->name.find(filter) == std::string::npos) continue;
        Workshop asOpened(picture, *function, "");
        const Timing opening = measure(asOpened, *function, runs, copy);
        Workshop busy(picture, *function, argumentsOf(*function));
        const Timing example = measure(busy, *function, runs, copy);
        table.add(std::string(function->name), opening, example, speedUp(busy, runs));
        copies.push_back(copy.milliseconds());
    }
    if (std::string("StuckiBW").find(filter) != std::string::npos) {
        const Timing diffusion = measureDiffusion(picture, runs, copy);
        table.add("StuckiBW", diffusion, diffusion, 1);
        copies.push_back(copy.milliseconds());
    }
    if (copies.empty()) {
        std::fprintf(stderr, "functions: no function has \"%s\" in its name\n", filter.c_str());
        return 2;
    }
    const double copyFaster = copy.twoThreadsFaster(3 * runs);
    std::printf(
        "a copy takes %.2f ms, and two threads are %.2f times as fast; pixel work built for %s\n",
        median(copies), copyFaster, processorLevel());
    if (jsonFile.empty()) return 0;
    std::ofstream file(jsonFile);
    file << nlohmann::json{{"copy", median(copies)},
                           {"copy_two_threads", copyFaster},
                           {"level", processorLevel()},
                           {"functions", table.rows()}}
                .dump(1)
         << "\n";
    return file.good() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() > 3 || (!arguments.empty() && std::atoi(arguments[0].c_str()) < 1)) {
        std::fputs("usage: bench_functions [RUNS [JSON-FILE [PART-OF-A-NAME]]]\n", stderr);
        return 2;
    }
    const auto argument = [&](size_t i) { return i < arguments.size() ? arguments[i] : ""; };
    try {
        return run(arguments.empty() ? 5 : std::atoi(arguments[0].c_str()), argument(1),
                   argument(2));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "functions: %s\n", failure.what());
        return 1;
    }
}
