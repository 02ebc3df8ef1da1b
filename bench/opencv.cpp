#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "pixels/bit_filter.h"
#include "pixels/bit_region.h"
#include "pixels/heap.h"
#include "pixels/threads.h"
#include "timing.h"

// Functions beside the operations of OpenCV that do the same kind of work on the same picture, four
// channels each. OpenCV writes into a picture that is there already.

namespace {

using namespace tessarine;
using namespace tessarine::bench;

struct Pair {
    const char* name;
    const char* member;  ///< what is called here
    const char* theirs;  ///< and there
    std::function<void()> ours;
    std::function<void()> opencv;
};

/// The picture for both, and where OpenCV puts what it makes.
struct Desk {
    cBitRegion region;
    cBitFilter filter;
    cBitFilter resized;
    cv::Mat source = cv::Mat(pictureHeight, pictureWidth, CV_8UC4);
    cv::Mat result = cv::Mat(pictureHeight, pictureWidth, CV_8UC4);
    cv::Mat between;
    cv::Mat grey;
    cv::Mat levels = cv::Mat(1, 256, CV_8U);
    cv::Mat sharpening = (cv::Mat_<float>(3, 3) << -2, -2, -2, -2, 74, -2, -2, -2, -2) / 58;
    cv::Mat turn = cv::getRotationMatrix2D({pictureWidth / 2.0F, pictureHeight / 2.0F}, 30, 1);
    cv::Mat placesX;
    cv::Mat placesY;
    cv::Mat places;
    cv::Mat fractions;

    explicit Desk(const PixelBuffer& picture) {
        region.Init(0, 0, pictureWidth, pictureHeight);
        filter.timeGetTime = resized.timeGetTime = [] { return 0U; };
        filter.Bits(picture);
        filter.BitsRegion(region.RegionMain());
        for (int32_t y = 0; y < pictureHeight; ++y)
            std::memcpy(source.ptr(y), picture.row(y), source.step);
        for (int i = 0; i < 256; ++i)
            levels.at<uint8_t>(i) = cv::saturate_cast<uint8_t>(255 * std::pow(i / 255.0, 1 / 1.7));
        placesX.create(source.size(), CV_32F);
        placesY.create(source.size(), CV_32F);
        for (int y = 0; y < source.rows; ++y)
            for (int x = 0; x < source.cols; ++x) {
                placesX.at<float>(y, x) = static_cast<float>(x + 30 * std::sin(y * 0.01));
                placesY.at<float>(y, x) = static_cast<float>(y);
            }
        // The form of the map that it reads fastest.
        cv::convertMaps(placesX, placesY, places, fractions, CV_16SC2, true);
    }

    void equalize() {
        cv::cvtColor(source, grey, cv::COLOR_BGRA2GRAY);
        int counts = 256;
        const float range[] = {0, 256};
        const float* ranges = range;
        cv::Mat histogram;
        cv::calcHist(&grey, 1, nullptr, cv::Mat(), histogram, 1, &counts, &ranges);
        cv::LUT(source, levels, result);
    }
    void mosaic() {
        cv::resize(source, between, {pictureWidth / 8, pictureHeight / 8}, 0, 0, cv::INTER_AREA);
        cv::resize(between, result, source.size(), 0, 0, cv::INTER_NEAREST);
    }
    void noise() {
        between.create(source.size(), CV_8UC4);
        cv::randu(between, 0, 60);
        cv::add(source, between, result);
    }
};

std::vector<Pair> pairsAt(Desk& desk, const PixelBuffer& picture) {
    cBitFilter& f = desk.filter;
    const auto convert = [&desk] { desk.source.convertTo(desk.result, -1, 1, 20); };
    const auto window = cv::getStructuringElement(cv::MORPH_RECT, {3, 3});
    return {
        {"brightness", "BRIGHTNESS", "convertTo", [&f] { f.BRIGHTNESS(20); }, convert},
        {"brightness", "BRIGHTNESS", "add", [&f] { f.BRIGHTNESS(20); },
         [&desk] { cv::add(desk.source, cv::Scalar(20, 20, 20, 0), desk.result); }},
        {"look-up", "GammaCorrection", "LUT", [&f] { f.GammaCorrection(70); },
         [&desk] { cv::LUT(desk.source, desk.levels, desk.result); }},
        {"3 by 3 mask", "SHARPEN", "filter2D", [&f] { f.SHARPEN(50); },
         [&desk] { cv::filter2D(desk.source, desk.result, -1, desk.sharpening); }},
        {"3 by 3 mean", "Blurs", "blur", [&f] { f.Blurs(1); },
         [&desk] {
             cv::blur(desk.source, desk.result, {3, 3});
         }},
        {"erode", "ERODE", "erode", [&f] { f.ERODE(); },
         [&desk, window] { cv::erode(desk.source, desk.result, window); }},
        {"dilate", "DILATE", "dilate", [&f] { f.DILATE(); },
         [&desk, window] { cv::dilate(desk.source, desk.result, window); }},
        {"equalize", "Equalize", "cvtColor, calcHist, LUT", [&f] { f.Equalize(); },
         [&desk] { desk.equalize(); }},
        {"rotate, bilinear", "RotateSmooth", "warpAffine", [&f] { f.RotateSmooth(30); },
         [&desk] {
             cv::warpAffine(desk.source, desk.result, desk.turn, desk.source.size(),
                            cv::INTER_LINEAR);
         }},
        {"remap, nearest", "WAVES", "remap with a ready map", [&f] { f.WAVES(8, 30, 0); },
         [&desk] {
             cv::remap(desk.source, desk.result, desk.places, desk.fractions, cv::INTER_NEAREST);
         }},
        {"resize, bilinear", "BitsResample", "resize",
         [&desk, picture] {
             desk.resized.Bits(picture);
             desk.resized.BitsResample(picture, 3000, 2250);
         },
         [&desk] {
             cv::resize(desk.source, desk.between, {3000, 2250}, 0, 0, cv::INTER_LINEAR);
         }},
        {"mosaic", "PIXELIZE", "resize twice", [&f] { f.PIXELIZE(8); }, [&desk] { desk.mosaic(); }},
        {"noise", "NOISE", "randu, add", [&f] { f.NOISE(60, false); }, [&desk] { desk.noise(); }},
    };
}

auto timed(const std::function<void()>& work) {
    return [&work](double (*clock)()) { return millisecondsOf(clock, work); };
}

int run(int runs, const std::string& jsonFile) {
    keepFreedMemory();
    const PixelBuffer picture = testPicture();
    Desk desk(picture);
    nlohmann::json rows = nlohmann::json::array();
    std::printf("%-18s %-16s %-24s %9s %9s %9s\n", "12 megapixels", "here", "there", "there, ms",
                "1 thread", "2 threads");
    for (const Pair& pair : pairsAt(desk, picture)) {
        setFilterThreads(1);
        cv::setNumThreads(1);
        std::vector<double> theirs;
        const auto opencv = [&](double (*clock)()) {
            theirs.push_back(millisecondsOf(clock, pair.opencv));
            return theirs.back();
        };
        const double alone = ratioOf(runs, &processorMilliseconds, timed(pair.ours), opencv);
        setFilterThreads(2);
        cv::setNumThreads(2);
        const double both = ratioOf(runs, &wallMilliseconds, timed(pair.ours), timed(pair.opencv));
        std::printf("%-18s %-16s %-24s %9.2f %8.2fx %8.2fx\n", pair.name, pair.member, pair.theirs,
                    median(theirs), alone, both);
        std::fflush(stdout);
        rows.push_back({{"name", pair.name},
                        {"ours", pair.member},
                        {"theirs", pair.theirs},
                        {"milliseconds_theirs", median(theirs)},
                        {"one_thread", alone},
                        {"two_threads", both}});
    }
    if (jsonFile.empty()) return 0;
    std::ofstream file(jsonFile);
    file << nlohmann::json{{"version", CV_VERSION}, {"pairs", rows}}.dump(1) << "\n";
    return file.good() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() > 2 || (!arguments.empty() && std::atoi(arguments[0].c_str()) < 1)) {
        std::fputs("usage: bench_opencv [RUNS [JSON-FILE]]\n", stderr);
        return 2;
    }
    return run(arguments.empty() ? 5 : std::atoi(arguments[0].c_str()),
               arguments.size() > 1 ? arguments[1] : "");
}
