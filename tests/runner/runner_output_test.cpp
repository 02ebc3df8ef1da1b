#include <filesystem>
#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "batch/list_files.h"
#include "runner_fixture.h"

// What the program writes where, and what becomes of it when nobody takes it.

namespace tessarine::tests {
namespace {

using nlohmann::json;

class RunnerOutput : public Runner {
  protected:
    /// The program with its standard output and error at other places.
    int runInto(const std::string& standardOutput, const std::string& standardError,
                std::vector<std::string> words) {
        words.insert(words.begin(), TESSARINE_BATCH);
        return Running(words, "/dev/null", standardOutput, standardError).wait();
    }
    /// The same with file 9 of the shell being a pipe that nobody reads any more.
    Finished runWithDeafPipe(const std::string& line, std::vector<std::string> words) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        EXPECT_EQ(::dup2(ends[1], 9), 9);
        ::close(ends[0]);
        ::close(ends[1]);
        const Finished end = runThroughShell(line, std::move(words));
        ::close(9);
        return end;
    }
    FunctionRecord brightness(int32_t level) {
        FunctionRecord record;
        record.name = "Brightness";
        record.id = "1";
        record.parameters = {level, 0, 0};
        return record;
    }

    const std::string err = scratch / "err";
};

TEST_F(RunnerOutput, AReportThatIsNotTakenIsToldAndThePicturesAreSaved) {
    const std::string a = grey("a.ppm", 10);
    const Finished end = runTo({"--quiet", "--report", "/dev/full", a, a});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(linesOf(end.err).size(), 1U) << end.err;
    EXPECT_NE(end.err.find("--report: '/dev/full' could not be written whole"), std::string::npos);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp"}));
}

TEST_F(RunnerOutput, AnOverviewOrAListingThatIsNotTakenGivesStatus1) {
    const std::string a = grey("a.ppm", 10);
    const std::vector<std::string> run{"--to", out, "--format", "bmp", a, "--mode", "window"};
    EXPECT_EQ(runInto("/dev/full", err, run), 1);
    EXPECT_NE(readFile(err).find("standard output takes no more"), std::string::npos);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp"}));
    for (const char* asked : {"--list-functions", "--list-formats"}) {
        EXPECT_EQ(runInto("/dev/full", err, {asked}), 1);
        EXPECT_EQ(readFile(err), "tessarine-batch: standard output takes no more\n");
    }
    EXPECT_EQ(runInto("/dev/full", err, {"--to", out, "--dry-run", a}), 1);
}

TEST_F(RunnerOutput, AReaderThatLeavesDoesNotEndTheRun) {
    const std::string a = grey("a.ppm", 10);
    const Finished end = runWithDeafPipe(
        "exec \"$@\" >&9", {"--to", out, "--format", "bmp", "--report", "-", a, a, a});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.err.find("could not be written whole"), std::string::npos) << end.err;
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Sample3.bmp"}));
}

TEST_F(RunnerOutput, NobodyNeedsToReadStandardError) {
    const std::string a = grey("a.ppm", 10);
    // Words before the run, during it and after it.
    const std::vector<std::string> words{"--to",
                                         out,
                                         "--format",
                                         "bmp",
                                         "--progress",
                                         "--overwrite",
                                         "--apply",
                                         "Rotate Intelligently:Degrees=20",
                                         a,
                                         in + "/none.ppm",
                                         a};
    for (const char* line : {"exec \"$@\" 2>&9", "exec \"$@\" 2>&-", "exec \"$@\" 2>/dev/full",
                             "exec \"$@\" <&- >&- 2>&-"}) {
        fs::remove_all(out);
        fs::create_directory(out);
        const Finished end = runWithDeafPipe(line, words);
        EXPECT_EQ(end.status, 1) << line;
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample3.bmp"})) << line;
        EXPECT_GT(readBitmapFile(out + "/Sample3.bmp").width(), 0) << line;
    }
}

TEST_F(RunnerOutput, ADryRunNotesWhatIsMissingAndWhatStands) {
    const std::string a = grey("a.ppm", 10);
    writeFile(out + "/Sample2.bmp", "mine");
    const std::string none = in + "/none.ppm";
    const auto plan = [&](const std::string& noteOfSecond) {
        return std::vector<std::string>{
            a + " -> " + out + "/Sample1.bmp",
            a + " -> " + out + "/Sample2.bmp (exists, " + noteOfSecond + ")",
            none + " -> " + out + "/Sample3.bmp (no such picture)"};
    };
    const std::string report = scratch / "report";
    const Finished kept = runTo({"--dry-run", "--report", report, a, a, none});
    EXPECT_EQ(kept.status, 0) << kept.err;
    EXPECT_EQ(linesOf(kept.out), plan("kept"));
    const Finished replaced = runTo({"--dry-run", "--overwrite", a, a, none});
    EXPECT_EQ(linesOf(replaced.out), plan("replaced"));
    EXPECT_EQ(readFile(out + "/Sample2.bmp"), "mine");
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample2.bmp"}));
    EXPECT_FALSE(fs::exists(report));
}

TEST_F(RunnerOutput, AQuietWindowRunPrintsNothing) {
    const std::string a = grey("a.ppm", 10);
    const Finished end = runTo({"--quiet", "--mode", "window", "--apply", "Negative", a});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(levelOf("Sample1.bmp"), 245);
}

TEST_F(RunnerOutput, TheOverviewMakesRoomForAReportOnStandardOutput) {
    const std::string a = grey("a.ppm", 10);
    const Finished end = runTo({"--mode", "window", "--report", "-", a});
    EXPECT_EQ(end.status, 0);
    const std::vector<std::string> report = linesOf(end.out);
    ASSERT_EQ(report.size(), 2U) << end.out;
    EXPECT_EQ(json::parse(report[0]).at("status"), "saved");
    EXPECT_EQ(json::parse(report[1]).at("summary").at("saved"), 1);
    EXPECT_NE(end.err.find("Total Number of functions to be Applied: 0\n"), std::string::npos);
    EXPECT_NE(end.err.find(" Processing Completed!\n"), std::string::npos);
}

TEST_F(RunnerOutput, ARowThatStandsForNoFunctionIsNamedUnlessQuiet) {
    const std::string a = grey("a.ppm", 10);
    const std::string list = in + "/list.qfk";
    FunctionRecord free = brightness(0);
    free.name = "Free";
    free.id = "63";
    writeFunctionList(list, std::vector<FunctionRecord>{free, brightness(30)});
    const Finished end = runTo({"--functions", list, a});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(linesOf(end.err).at(0),
              "tessarine-batch: the row 'Free' stands for no function and changes nothing");
    EXPECT_EQ(levelOf("Sample1.bmp"), 40);
    EXPECT_EQ(runTo({"--quiet", "--functions", list, a}).err, "");
    const Finished other = runTo({"--apply", "Negative", a});
    EXPECT_EQ(other.err.find("changes nothing"), std::string::npos) << other.err;
}

TEST_F(RunnerOutput, RandomNumbersHangOnThePicturesNumberAlone) {
    const std::string a = grey("a.ppm", 100);
    const auto outputOf = [&](const std::string& name) { return readBitmapFile(out + "/" + name); };
    const std::vector<std::string> noise{"--overwrite", "--apply", "Noise:Intensity=40"};
    const auto runNoise = [&](std::vector<std::string> words) {
        words.insert(words.begin(), noise.begin(), noise.end());
        return runTo(std::move(words));
    };
    ASSERT_EQ(runNoise({a, a}).status, 0);
    const PixelBuffer first = outputOf("Sample1.bmp");
    const PixelBuffer second = outputOf("Sample2.bmp");
    EXPECT_FALSE(first == second) << "the same picture under two numbers";
    // What becomes of the picture before it plays no part.
    EXPECT_EQ(runNoise({in + "/missing.ppm", a}).status, 1);
    EXPECT_EQ(outputOf("Sample2.bmp"), second);
    // Picture 1 has the random numbers of a new program, as the first picture of the window has.
    ASSERT_EQ(runNoise({"--mode", "window", a, a}).status, 0);
    EXPECT_EQ(outputOf("Sample1.bmp"), first);
    EXPECT_FALSE(outputOf("Sample2.bmp") == second) << "in the window the sequence goes on";
}

TEST_F(RunnerOutput, RandomNumbersAreTheSameHoweverTheFunctionIsNamed) {
    const std::string a = grey("a.ppm", 100);
    const std::string list = in + "/list.qfk";
    FunctionRecord noise;
    noise.name = "Noise";
    noise.id = "37";
    noise.parameters = {40, 0, 0};
    writeFunctionList(list, std::vector<FunctionRecord>{noise});
    for (const char* mode : {"window", "independent"}) {
        ASSERT_EQ(runTo({"--overwrite", "--mode", mode, "--functions", list, a}).status, 0);
        const PixelBuffer listed = readBitmapFile(out + "/Sample1.bmp");
        ASSERT_EQ(runTo({"--overwrite", "--mode", mode, "--apply", "Noise:Intensity=40", a}).status,
                  0);
        EXPECT_EQ(readBitmapFile(out + "/Sample1.bmp"), listed) << mode;
    }
}

TEST_F(RunnerOutput, ANumberThatDoesNotFitMeansTheSameInBothModesForTheFirstPicture) {
    const std::string a = grey("a.ppm", 10);
    const std::string list = in + "/list.qfk";
    // A row holds 16 bits. Where the number does not fit, the number before it stands.
    const auto levels = [&](const char* mode, const std::vector<FunctionRecord>& rows) {
        writeFunctionList(list, rows);
        const Finished end = runTo({"--overwrite", "--mode", mode, "--functions", list, a, a});
        EXPECT_EQ(end.status, 0) << end.err;
        return std::pair(levelOf("Sample1.bmp"), levelOf("Sample2.bmp"));
    };
    const std::vector<FunctionRecord> behind{brightness(30), brightness(70000)};
    EXPECT_EQ(levels("window", behind), std::pair(70, 70));
    EXPECT_EQ(levels("independent", behind), std::pair(70, 70));
    // Before the first row stands what the list left: the last record's own number.
    const std::vector<FunctionRecord> before{brightness(70000), brightness(20), brightness(-90000)};
    const auto window = levels("window", before);
    const auto each = levels("independent", before);
    EXPECT_EQ(window.first, each.first);
    EXPECT_EQ(each.second, each.first) << "each picture starts from what stood at the beginning";
    EXPECT_EQ(each.first, 40) << "black, then 20 brighter twice";
    EXPECT_EQ(window.second, 70) << "in the window what the picture before it left";
}

}  // namespace
}  // namespace tessarine::tests
