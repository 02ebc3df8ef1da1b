#include "functions_page.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "imagefiles/image_files.h"
#include "support/paths.h"
#include "support/pictures.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

const fs::path sources = TESSARINE_SOURCE_DIR;

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

PixelBuffer pictureOf(const fs::path& file) {
    mFormat format;
    const std::optional<Bitmap> bitmap = LoadImageFile(format, file.string(), "png");
    return bitmap ? bitmap->pixels() : PixelBuffer();
}

std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

TEST(FunctionsPage, TheCommittedPageAndPicturesAreWhatTheTableGives) {
    const ScratchFolder scratch;
    writeFunctionsPage(scratch.path(), sources / "assets/sample.ppm");
    EXPECT_EQ(contentOf(scratch.path() / "functions.md"), contentOf(sources / "docs/functions.md"))
        << "script/docs makes the page anew";

    const fs::path made = scratch.path() / "pictures/functions";
    const fs::path committed = sources / "docs/pictures/functions";
    ASSERT_EQ(namesIn(made), namesIn(committed));
    // The pixels count: another version of the library may pack them otherwise.
    for (const std::string& name : namesIn(made))
        EXPECT_EQ(firstDifference(pictureOf(committed / name), pictureOf(made / name)), "") << name;
}

TEST(FunctionsPage, EveryFunctionShowsAChange) {
    const fs::path folder = sources / "docs/pictures/functions";
    const PixelBuffer before = pictureOf(folder / "before.png");
    ASSERT_EQ(before.width(), 200);
    const std::set<std::string> names = namesIn(folder);
    EXPECT_EQ(names.size(), 70U) << "69 functions and the sample";
    for (const std::string& name : names) {
        if (name == "before.png") continue;
        EXPECT_NE(firstDifference(pictureOf(folder / name), before), "") << name;
    }
}

TEST(FunctionsPage, APicturesNameIsItsFunctionsInLowerCase) {
    EXPECT_EQ(pictureNameOf("Blur"), "blur");
    EXPECT_EQ(pictureNameOf("Replace Hue & Stretch"), "replace-hue-stretch");
    EXPECT_EQ(pictureNameOf("Reduction (Level)"), "reduction-level");
    EXPECT_EQ(pictureNameOf("X -Black"), "x-black");
}

}  // namespace
}  // namespace tessarine::tests
