#include <set>
#include <string>

#include <gtest/gtest.h>

#include "runner/function_arguments.h"
#include "support/pictures.h"

// The inputs by which each function is shown to people.

namespace tessarine::tests {
namespace {

/// What a run with one function makes of a picture in a program of its own.
PixelBuffer ranWith(const std::string& function, const PixelBuffer& picture) {
    SilentPlatform platform;
    cBatch batch(platform);
    CommandLine line;
    line.functions = {{FunctionSource::Kind::apply, function}};
    addFunctions(batch, line);
    EXPECT_EQ(batch.Ltray.size(), 1U);
    batch.cFilter.random = RandomGenerator();
    batch.cFilter.timeGetTime = [] { return 0U; };
    batch.iSrc.setPicture(Bitmap(picture));
    batch.SetPicture(batch.iSrc);
    batch.cFilter.Bits(batch.workBits);
    batch.cFilter.BitsRegion(batch.workRegion.RegionMain());
    batch.ApplyRow(static_cast<int16_t>(batch.Ltray.at(0).Tag), 1, true);
    return batch.workBits;
}

std::string withExample(const FunctionDef& function) {
    std::string text(function.name);
    if (!function.example.empty()) text += ":" + std::string(function.example);
    return text;
}

TEST(Examples, GiveTheSamePictureTwice) {
    const PixelBuffer picture = randomBuffer(61, 47, 8);
    int functions = 0;
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0) continue;
        const std::string text = withExample(function);
        EXPECT_EQ(ranWith(text, picture), ranWith(text, picture)) << text;
        ++functions;
    }
    EXPECT_EQ(functions, 69);
}

TEST(Examples, ShowSomething) {
    const PixelBuffer picture = Bitmap(randomBuffer(200, 174, 8)).pixels();
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0) continue;
        const std::string text = withExample(function);
        EXPECT_FALSE(ranWith(text, picture) == picture) << text;
    }
}

TEST(Examples, ShowMoreThanTheSheetAsItOpens) {
    // These tell the inputs that their sheets open with, so that the text names them.
    const std::set<int16_t> asOpened{29, 40};
    const PixelBuffer picture = Bitmap(randomBuffer(200, 174, 8)).pixels();
    int others = 0;
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0 || function.example.empty()) continue;
        const PixelBuffer plain = ranWith(std::string(function.name), picture);
        EXPECT_EQ(ranWith(withExample(function), picture) == plain, asOpened.contains(function.id))
            << function.name;
        others += asOpened.contains(function.id) ? 0 : 1;
    }
    EXPECT_GT(others, 30);
}

}  // namespace
}  // namespace tessarine::tests
