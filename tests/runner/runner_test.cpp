#include <filesystem>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "batch/functions.h"
#include "batch/list_files.h"
#include "runner_fixture.h"

// The program as scripts and people call it.

namespace tessarine::tests {
namespace {

using nlohmann::json;

TEST_F(Runner, PicturesAreNumberedByTheirPlaceOnTheCommandLine) {
    const std::string a = grey("a.ppm", 10);
    const std::string b = grey("b.ppm", 20);
    grey("folder/d.ppm", 40);
    grey("folder/c.ppm", 30);
    grey("folder/below/e.ppm", 50);
    writeFile(in + "/folder/notes.txt", "no picture");
    writePictureList(in + "/list.qpkl", std::vector<std::string>{b});
    const Finished end =
        runTo({b, in + "/folder", "--pictures", in + "/list.qpkl", a, "--from", "-"},
              b + "\n" + a + "\n");
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, "");
    const std::vector<int> levels{20, 30, 40, 20, 10, 20, 10};
    for (size_t i = 0; i < levels.size(); ++i)
        EXPECT_EQ(levelOf("Sample" + std::to_string(i + 1) + ".bmp"), levels[i]) << i + 1;
    EXPECT_EQ(outputs().size(), levels.size());
}

TEST_F(Runner, RecursiveFoldersGiveAllBelowThem) {
    grey("b.ppm", 10);
    grey("a/z.ppm", 20);
    EXPECT_EQ(runTo({"--recursive", in}).status, 0);
    EXPECT_EQ(levelOf("Sample1.bmp"), 10);
    EXPECT_EQ(levelOf("Sample2.bmp"), 20);
}

TEST_F(Runner, PathsMayBeSeparatedByNul) {
    const std::string odd = grey("odd\nname.ppm", 77);
    EXPECT_EQ(runTo({"--from", "-", "-0"}, odd + std::string(1, '\0')).status, 0);
    EXPECT_EQ(levelOf("Sample1.bmp"), 77);
}

TEST_F(Runner, FunctionsRunInTheOrderOfTheCommandLine) {
    const std::string a = grey("a.ppm", 100);
    FunctionRecord brighter;
    brighter.name = "Brightness";
    brighter.id = "1";
    brighter.parameters = {30, 0, 0};
    writeFunctionList(in + "/list.qfk", std::vector<FunctionRecord>{brighter});
    EXPECT_EQ(runTo({"--apply", "Negative", "--functions", in + "/list.qfk", a}).status, 0);
    EXPECT_EQ(levelOf("Sample1.bmp"), 185);
    EXPECT_EQ(
        runTo({"--overwrite", "--functions", in + "/list.qfk", "--apply", "negative", a}).status,
        0);
    EXPECT_EQ(levelOf("Sample1.bmp"), 125);
}

TEST_F(Runner, ApplyTakesWhatTheSheetShows) {
    const std::string a = picture("a.ppm", plain(4, 4, {10, 100, 200, 0}));
    const auto result = [&](const std::string& argument, std::vector<std::string> more = {}) {
        more.insert(more.end(), {"--overwrite", "--apply", argument, a});
        const Finished end = runTo(more);
        EXPECT_EQ(end.status, 0) << end.err;
        return readBitmapFile(out + "/Sample1.bmp").at(0, 0);
    };
    EXPECT_EQ(result("Brightness:level=40"), (Pixel{50, 140, 240, 0}));
    EXPECT_EQ(result("Brightness"), (Pixel{10, 100, 200, 0}));
    EXPECT_EQ(result("Gamma Correction:Gamma=0"), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(result("Tweak RGB: Red=-50 , Blue=5"), (Pixel{15, 100, 150, 0}));
    EXPECT_EQ(result("Swap RGB:Red=B,Green=R"), (Pixel{10, 200, 10, 0}));
    EXPECT_EQ(result("Swap RGB", {"--invert", "r", "--kill", "gb"}), (Pixel{0, 0, 55, 0}));
    EXPECT_EQ(result("Swap RGB:Invert=rg,Kill=b"), (Pixel{0, 155, 55, 0}));
}

TEST_F(Runner, EveryFormatIsKnownByNumberTextAndShortName) {
    const std::string a = grey("a.ppm", 10);
    for (const char* format : {"9", "png", "PNG - Portable Network Graphics"})
        EXPECT_EQ(run({"--to", out, "--name", format, "--format", format, a}).status, 0);
    EXPECT_EQ(outputs(), (std::set<std::string>{"91.png", "png1.png",
                                                "PNG - Portable Network Graphics1.png"}));
    EXPECT_EQ(run({"--to", out, a}).status, 0);
    EXPECT_TRUE(outputs().count("Sample1.jpg"));
}

TEST_F(Runner, AnExistingTargetIsKeptUnlessToldOtherwise) {
    const std::string a = grey("a.ppm", 10);
    writeFile(out + "/Sample1.bmp", "mine");
    const Finished kept = runTo({"--report", "-", a});
    EXPECT_EQ(kept.status, 0);
    EXPECT_EQ(readFile(out + "/Sample1.bmp"), "mine");
    EXPECT_EQ(json::parse(linesOf(kept.out).at(0)).at("status"), "kept");
    EXPECT_EQ(runTo({"--overwrite", a}).status, 0);
    EXPECT_EQ(levelOf("Sample1.bmp"), 10);
}

/// A basket with an unreadable first file, one that stands, an unreadable one in the middle, a
/// deleted one, one that stands and one whose target exists.
class DamagedBasket : public Runner {
  protected:
    DamagedBasket() {
        writeFile(in + "/first.png", "no picture");
        picture("second.ppm", plain(6, 4, {10, 10, 10, 0}));
        writeFile(in + "/third.jpg", "no picture");
        picture("fifth.ppm", plain(3, 5, {50, 50, 50, 0}));
        picture("sixth.ppm", plain(2, 2, {90, 90, 90, 0}));
        for (const char* name :
             {"first.png", "second.ppm", "third.jpg", "deleted.ppm", "fifth.ppm", "sixth.ppm"})
            basket.push_back(in + "/" + name);
        writeFile(out + "/Sample6.bmp", "mine");
    }
    Finished runBasket(std::vector<std::string> words) {
        words.insert(words.end(), {"--apply", "Brightness:Level=30"});
        words.insert(words.end(), basket.begin(), basket.end());
        return runTo(words);
    }

    std::vector<std::string> basket;
};

TEST_F(DamagedBasket, InWindowModeAFailedFileGivesThePictureBeforeItOnceMore) {
    const Finished end = runBasket({"--mode", "window"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Sample3.bmp",
                                                "Sample4.bmp", "Sample5.bmp", "Sample6.bmp"}));
    const PixelBuffer first = readBitmapFile(out + "/Sample1.bmp");
    EXPECT_EQ(first.width(), 200);  // the preview's sample
    EXPECT_EQ(first.height(), 174);
    EXPECT_EQ(levelOf("Sample2.bmp"), 40);
    EXPECT_EQ(levelOf("Sample3.bmp"), 70);
    EXPECT_EQ(levelOf("Sample4.bmp"), 100);
    EXPECT_EQ(readBitmapFile(out + "/Sample4.bmp").width(), 6);
    EXPECT_EQ(levelOf("Sample5.bmp"), 80);
    EXPECT_EQ(readFile(out + "/Sample6.bmp"), "mine");

    std::vector<std::string> expected{"6",
                                      "Total Number of functions to be Applied: 1",
                                      "Destination Folder: " + out + "/",
                                      "Format Selected to save the processed images: 'BMP - "
                                      "Windows Bitmap '",
                                      "Generic Name for the processed image: 'Sample'",
                                      " Please Wait... Batch Image Processing in Progress!",
                                      ""};
    expected.push_back("");
    for (size_t i = 0; i < basket.size(); ++i)
        expected.insert(
            expected.end(),
            {"", " Processing " + fs::path(basket[i]).filename().string(), " Applied Brightness",
             " Processed Image Saved as Sample" + std::to_string(i + 1) + ".bmp"});
    expected.insert(expected.end(), {"", " Processing Completed!"});
    EXPECT_EQ(linesOf(end.out), expected);
}

TEST_F(DamagedBasket, ByThemselvesOnlyReadablePicturesGiveOutputs) {
    const Finished end = runBasket({"--quiet", "--report", "-"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample2.bmp", "Sample5.bmp", "Sample6.bmp"}));
    EXPECT_EQ(levelOf("Sample2.bmp"), 40);
    EXPECT_EQ(levelOf("Sample5.bmp"), 80);
    EXPECT_EQ(readFile(out + "/Sample6.bmp"), "mine");

    const std::vector<std::string> complaints = linesOf(end.err);
    ASSERT_EQ(complaints.size(), 3U) << end.err;
    EXPECT_NE(complaints[0].find("first.png"), std::string::npos);
    EXPECT_NE(complaints[1].find("third.jpg"), std::string::npos);
    EXPECT_NE(complaints[2].find("deleted.ppm"), std::string::npos);

    const std::vector<std::string> report = linesOf(end.out);
    ASSERT_EQ(report.size(), 7U);
    const std::vector<std::string> statuses{"failed", "saved", "failed", "failed", "saved", "kept"};
    for (size_t i = 0; i < statuses.size(); ++i) {
        const json entry = json::parse(report[i]);
        EXPECT_EQ(entry.at("number"), i + 1);
        EXPECT_EQ(entry.at("input"), basket[i]);
        EXPECT_EQ(entry.at("status"), statuses[i]) << i;
        EXPECT_EQ(entry.at("error"), statuses[i] == "failed" ? "unreadable" : "") << i;
    }
    const json second = json::parse(report[1]);
    EXPECT_EQ(second.at("width"), 6);
    EXPECT_EQ(second.at("height"), 4);
    EXPECT_EQ(second.at("depth"), 24);
    EXPECT_EQ(second.at("bytes"), fs::file_size(out + "/Sample2.bmp"));
    EXPECT_EQ(second.at("output"), out + "/Sample2.bmp");
    const json summary = json::parse(report[6]).at("summary");
    EXPECT_EQ(summary.at("saved"), 2);
    EXPECT_EQ(summary.at("kept"), 1);
    EXPECT_EQ(summary.at("failed"), 3);
}

TEST_F(Runner, BothModesGiveTheSamePixelsForReadablePictures) {
    const std::string a = picture("a.ppm", randomBuffer(61, 43, 5));
    const std::vector<std::string> chain{"--apply", "Contrast:Level=40",    "--apply", "Equalize",
                                         "--apply", "Saturation:Level=-30", a,         a};
    std::vector<std::string> words{"--name", "each"};
    words.insert(words.end(), chain.begin(), chain.end());
    EXPECT_EQ(runTo(words).status, 0);
    words = {"--name", "window", "--mode", "window"};
    words.insert(words.end(), chain.begin(), chain.end());
    EXPECT_EQ(runTo(words).status, 0);
    for (const char* number : {"1", "2"})
        EXPECT_EQ(readFile(out + "/each" + number + ".bmp"),
                  readFile(out + "/window" + number + ".bmp"));
}

TEST_F(Runner, ADryRunSaysWhatItWouldWriteAndWritesNothing) {
    const std::string a = grey("a.ppm", 10);
    const Finished end = runTo({"--dry-run", a, a});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(linesOf(end.out), (std::vector<std::string>{a + " -> " + out + "/Sample1.bmp",
                                                          a + " -> " + out + "/Sample2.bmp"}));
    EXPECT_TRUE(outputs().empty());
}

TEST_F(Runner, AnUnwritableTargetFailsThatPictureAlone) {
    const std::string a = grey("a.ppm", 10);
    fs::create_directory(out + "/Sample1.bmp");
    const Finished end = runTo({"--overwrite", "--report", "-", a, a});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(json::parse(linesOf(end.out).at(0)).at("error"), "cannot-write");
    EXPECT_EQ(levelOf("Sample2.bmp"), 10);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp"}));
}

TEST_F(Runner, ListingsNameEveryFunctionAndFormat) {
    const Finished functions = run({"--list-functions"});
    EXPECT_EQ(functions.status, 0);
    for (const TreeNode& node : catalogueTree())
        EXPECT_NE(functions.out.find(std::string(node.text) + "\n"), std::string::npos)
            << node.text;
    EXPECT_NE(functions.out.find("Level: -100 to 250 (first 0)"), std::string::npos);
    const Finished formats = run({"--list-formats"});
    EXPECT_EQ(linesOf(formats.out).size(), 18U);
    EXPECT_EQ(formats.err, "");
    EXPECT_EQ(run({"--help"}).status, 0);
    EXPECT_NE(run({"--version"}).out.find("tessarine-batch "), std::string::npos);
}

TEST_F(Runner, ProgressTellsRateAndTimeLeft) {
    const std::string a = grey("a.ppm", 10);
    const Finished end = runTo({"--progress", a, a, a});
    EXPECT_NE(end.err.find("3 of 3 pictures"), std::string::npos) << end.err;
    EXPECT_NE(end.err.find(" a second, 0:00 left"), std::string::npos) << end.err;
}

}  // namespace
}  // namespace tessarine::tests
