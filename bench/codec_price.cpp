#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "batch/batch.h"
#include "imagefiles/codec/codec_files.h"
#include "imagefiles/codec/helper_process.h"
#include "pixels/heap.h"
#include "pixels/threads.h"

// What it costs to have picture files read and written by a helper process: the same run over 40
// photographs of three megapixels, by turns in this process and through the helper, one picture
// after the other; and once more with several pictures side by side, which only helpers can do. The
// turns make pairs, so that what else the machine does falls on both alike.

namespace {

using namespace tessarine;
using Clock = std::chrono::steady_clock;

constexpr int32_t pictures = 40;
constexpr int pairs = 9;

/// Soft shapes under a fine grain, as photographs have them.
Bitmap photograph(int32_t number) {
    constexpr int32_t width = 2048;
    constexpr int32_t height = 1536;
    Bitmap picture(width, height);
    auto state = static_cast<uint32_t>(number);
    for (int32_t y = 0; y < height; ++y) {
        Pixel* row = picture.writableRow(y);
        for (int32_t x = 0; x < width; ++x) {
            state = state * 1664525U + 1013904223U;
            const auto grain = static_cast<double>(state >> 28);
            const double light = 110 + 60 * std::sin(x * 0.004 + number) * std::cos(y * 0.006) +
                                 30 * std::sin((x + 2 * y) * 0.03);
            row[x] = {static_cast<uint8_t>(light * 0.7 + grain),
                      static_cast<uint8_t>(light + grain),
                      static_cast<uint8_t>(250 - light + grain / 2), 0};
        }
    }
    return picture;
}

std::vector<BasketItem> makePictures(const std::string& folder) {
    std::vector<BasketItem> basket;
    mFormat format;
    for (int32_t i = 1; i <= pictures; ++i) {
        PictureHolder holder;
        holder.setPicture(photograph(i));
        const std::string path = folder + "/" + std::to_string(i) + ".jpg";
        SaveImageFile(format, holder, "jpg", path, true, 6);
        basket.push_back({std::to_string(i), "jpg", path, folder});
    }
    return basket;
}

/// Seconds that a run takes; the process that does it is new to none of its parts.
double secondsOf(cBatch& batch) {
    const auto start = Clock::now();
    batch.BatchEach();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    for (const PictureReport& entry : batch.report.entries())
        if (entry.status != PictureReport::Status::saved)
            std::printf("%s: %s\n", entry.input.c_str(), entry.message.c_str());
    return seconds;
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + pairs / 2, values.end());
    return values[pairs / 2];
}

void measure(const char* name, const std::vector<const char*>& chain,
             const std::vector<BasketItem>& basket, const std::string& out, CodecFiles& helper) {
    SilentPlatform platform;
    cBatch here(platform, localFiles());
    cBatch there(platform, helper);
    for (cBatch* batch : {&here, &there}) {
        for (const char* function : chain) {
            batch->SelectNode(findFunction(function)->treeIndex);
            batch->CmdAdd();
        }
        batch->lvSelected = basket;
        batch->txtDestination = out;
        batch->cboFormat.index = 6;
        batch->chkOverwrite = 1;
        secondsOf(*batch);
    }
    // As in the programs, buffers lie where helpers find them.
    const auto secondsThere = [&] {
        const HandOverMemory shared(helper.memory());
        return secondsOf(there);
    };
    std::vector<double> inProcess, throughHelper, ratios, sideBySide;
    for (int i = 0; i < pairs; ++i) {
        // Whoever comes second meets a machine that is warmer: they take turns.
        const bool helperFirst = i % 2 == 1;
        if (helperFirst) throughHelper.push_back(secondsThere());
        inProcess.push_back(secondsOf(here));
        if (!helperFirst) throughHelper.push_back(secondsThere());
        ratios.push_back(throughHelper.back() / inProcess.back());
        there.jobs = filterThreads() + 1;
        sideBySide.push_back(secondsThere() / inProcess.back());
        there.jobs = 1;
    }
    std::printf("%-30s %8.3f %10.3f %8.3f %14.3f\n", name, median(inProcess), median(throughHelper),
                median(ratios), median(sideBySide));
}

}  // namespace

int main() {
    keepFreedMemory();
    namespace fs = std::filesystem;
    std::string folder = (fs::temp_directory_path() / "tessarine-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) return 1;
    fs::create_directory(folder + "/out");
    {
        CodecFiles::Options options;
        options.program = helperProgram();
        CodecFiles helper(std::move(options));
        const std::vector<BasketItem> basket = makePictures(folder);
        std::printf("%-30s %8s %10s %8s %14s\n", "40 JPEGs of 3 megapixels", "here, s", "helper, s",
                    "ratio", "side by side");
        measure("convert", {}, basket, folder + "/out/", helper);
        measure("brightness, contrast, sharpen", {"Brightness", "Contrast", "Sharpen"}, basket,
                folder + "/out/", helper);
    }
    fs::remove_all(folder);
    return 0;
}
