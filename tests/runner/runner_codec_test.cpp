#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <thread>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "runner_fixture.h"
#include "support/children.h"
#include "support/misbehaviour.h"

// Runs over files that take the helper process down.

namespace tessarine::tests {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

class RunnerWithHelpers : public Runner {
  protected:
    RunnerWithHelpers() {
        fs::create_directories(scratch / "bin");
        // A copy, for the helper is looked for beside the program's own file.
        fs::copy_file(TESSARINE_BATCH, program);
    }
    void placeHelper(const std::string& helper) const {
        // A copy too: tests beside this one have helpers of their own.
        fs::copy_file(helper, scratch / "bin/tessarine-codec");
    }
    std::vector<std::string> words(std::vector<std::string> more) const {
        more.insert(more.begin(), {program, "--to", out, "--format", "bmp"});
        return more;
    }
    Finished runHere(std::vector<std::string> more) {
        return runProgram(words(std::move(more)), scratch.path().string());
    }
    std::string bad(const std::string& name, const std::string& word) const {
        writeFile(in + "/" + name, misbehavingFile(word));
        return in + "/" + name;
    }
    std::vector<json> report() const {
        std::vector<json> entries;
        for (const std::string& line : linesOf(readFile(scratch / "report")))
            entries.push_back(json::parse(line));
        if (!entries.empty()) entries.pop_back();
        return entries;
    }
    /// The helpers of the scratch folder that are there still.
    int helpersLeft() const {
        int count = 0;
        const std::string helper = fs::canonical(scratch / "bin/tessarine-codec");
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator("/proc", ignored))
            if (fs::read_symlink(entry.path() / "exe", ignored) == helper) ++count;
        return count;
    }

    const std::string program = scratch / "bin/tessarine-batch";
};

const std::map<std::string, std::string> classes{
    {"crash", "codec-died"},
    {"abort", "codec-died"},
    {"exit", "codec-died"},
    {"hang", "timed-out"},
    {"spin", "timed-out"},
    {"allocate", helpersHaveMemoryLimits ? "too-large" : "timed-out"},
    {"lie-size", "codec-died"},
    {"lie-block", "codec-died"},
    {"lie-number", "codec-died"},
    {"lie-early", "codec-died"},
    {"silent-close", "codec-died"}};

TEST_F(RunnerWithHelpers, OfAHundredPicturesThirtyMisbehaveAndSeventyAreSaved) {
    placeHelper(TESSARINE_CODEC_MISBEHAVING);
    std::vector<std::string> all{"--timeout", "2",        "--memory",
                                 "256",       "--report", scratch / "report"};
    std::vector<std::string> goodOnes;
    std::map<int, std::string> expected;
    auto next = classes.begin();
    for (int i = 1; i <= 100; ++i) {
        const std::string name = "p" + std::to_string(1000 + i) + ".ppm";
        if (i % 10 == 3 || i % 10 == 4 || i % 10 == 9) {
            all.push_back(bad(name, next->first));
            expected[i] = next->second;
            if (++next == classes.end()) next = classes.begin();
        } else {
            all.push_back(picture(name, randomBuffer(20 + i, 30, static_cast<uint32_t>(i))));
            goodOnes.push_back(all.back());
        }
    }
    ASSERT_EQ(expected.size(), 30U);
    all.insert(all.end(), {"--apply", "Contrast:Level=40"});
    const Finished end = runHere(all);
    EXPECT_EQ(end.status, 1) << end.err;
    EXPECT_EQ(outputs().size(), 70U);
    for (const json& entry : report()) {
        const int number = entry.at("number");
        const auto failure = expected.find(number);
        EXPECT_EQ(entry.at("status"), failure == expected.end() ? "saved" : "failed") << entry;
        if (failure != expected.end()) {
            EXPECT_EQ(entry.at("error"), failure->second) << entry;
        }
    }
    EXPECT_EQ(report().size(), 100U);
    EXPECT_EQ(helpersLeft(), 0);

    // The bytes are those of a run over the good ones alone, with the ordinary helper.
    std::vector<std::string> outputsOfAll;
    for (int i = 1; i <= 100; ++i)
        if (expected.count(i) == 0)
            outputsOfAll.push_back(readFile(out + "/Sample" + std::to_string(i) + ".bmp"));
    fs::remove_all(out);
    fs::create_directory(out);
    goodOnes.insert(goodOnes.end(), {"--apply", "Contrast:Level=40"});
    EXPECT_EQ(runTo(goodOnes).status, 0);
    for (size_t i = 0; i < outputsOfAll.size(); ++i)
        EXPECT_EQ(readFile(out + "/Sample" + std::to_string(i + 1) + ".bmp"), outputsOfAll[i]) << i;
    for (const auto& entry : fs::directory_iterator(scratch.path()))
        EXPECT_THAT(entry.path().filename().string(), testing::Not(HasSubstr("essarine-")))
            << "a temporary file is left";
}

TEST_F(RunnerWithHelpers, InWindowModeThePictureBeforeIsProcessedInPlaceOfOneThatKillsTheHelper) {
    placeHelper(TESSARINE_CODEC_MISBEHAVING);
    for (const auto& [word, errorName] : classes) {
        if (word == "spin" || word == "allocate") continue;  // seconds each, as `hang`
        const Finished end =
            runHere({"--mode", "window", "--quiet", "--overwrite", "--timeout", "1", "--report",
                     scratch / "report", grey("a.ppm", 10), bad("b.ppm", word), grey("c.ppm", 90)});
        EXPECT_EQ(end.status, 1) << end.err;
        EXPECT_EQ(outputs().size(), 3U) << word;
        EXPECT_EQ(levelOf("Sample2.bmp"), 10) << word;
        EXPECT_EQ(levelOf("Sample3.bmp"), 90) << word;
        ASSERT_EQ(report().size(), 3U);
        EXPECT_EQ(report()[1].at("error"), errorName) << word;
        EXPECT_EQ(report()[2].at("status"), "saved") << word;
    }
}

TEST_F(RunnerWithHelpers, AKilledRunTakesAHangingHelperAlong) {
    placeHelper(TESSARINE_CODEC_MISBEHAVING);
    const std::string hanging = bad("hang.ppm", "hang");
    const Running running(words({hanging}), "/dev/null", scratch / "stdout", scratch / "stderr");
    for (int i = 0; i < 500 && helpersLeft() == 0; ++i)
        std::this_thread::sleep_for(10ms);
    EXPECT_EQ(helpersLeft(), 1);
    std::this_thread::sleep_for(200ms);
    running.kill(SIGKILL);
    running.wait();
    const auto killed = std::chrono::steady_clock::now();
    while (helpersLeft() > 0 && std::chrono::steady_clock::now() - killed < 10s)
        std::this_thread::sleep_for(5ms);
    EXPECT_LT(std::chrono::steady_clock::now() - killed, 1s);
}

TEST_F(RunnerWithHelpers, WithoutTheHelperProgramNothingStarts) {
    const Finished end = runHere({grey("a.ppm", 1)});
    expectRefused(end, 3, {"tessarine-codec", "missing", scratch / "bin"});
}

TEST_F(RunnerWithHelpers, WhatIsPlannedOrAskedNeedsNoHelper) {
    EXPECT_EQ(runHere({"--dry-run", grey("a.ppm", 1)}).status, 0);
    EXPECT_EQ(runProgram({program, "--list-formats"}, scratch.path().string()).status, 0);
}

TEST_F(RunnerWithHelpers, AHelperThatCannotBeStartedIsToldForEachPicture) {
    writeFile(scratch / "bin/tessarine-codec", "no program");
    fs::permissions(scratch / "bin/tessarine-codec", fs::perms::owner_all);
    const Finished end = runHere({grey("a.ppm", 1), grey("b.ppm", 2)});
    EXPECT_EQ(end.status, 1);
    const std::vector<std::string> lines = linesOf(end.err);
    ASSERT_EQ(lines.size(), 3U) << end.err;
    for (size_t i = 0; i < 2; ++i)
        EXPECT_THAT(lines[i], AllOf(HasSubstr("codec-died"), HasSubstr("cannot be started")));
}

TEST_F(RunnerWithHelpers, TheTimeAndTheMemoryOfAPictureAreAsked) {
    placeHelper(TESSARINE_CODEC_MISBEHAVING);
    const auto start = std::chrono::steady_clock::now();
    const Finished end = runHere({"--timeout", "0.5", bad("hang.ppm", "hang")});
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("timed-out"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 500ms);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    EXPECT_THAT(runHere({"--memory", "16", picture("large.ppm", plain(4000, 4000, {}))}).err,
                HasSubstr("too-large"));
}

TEST_F(RunnerWithHelpers, TimesAndMemoriesOutOfRangeAreRefused) {
    for (const char* wrong : {"0", "-1", "nan", "inf", "1e9", "x", "", "5s"})
        expectRefused(runTo({"--timeout", wrong, in}), 2, {"--timeout"});
    for (const char* wrong : {"0", "15", "-1", "1.5", "x", "1048577"})
        expectRefused(runTo({"--memory", wrong, in}), 2, {"--memory"});
}

TEST_F(RunnerWithHelpers, ASignalToTheWholeGroupDoesNotReachTheHelper) {
    const std::string large = picture("large.ppm", randomBuffer(600, 600, 3));
    // A shell has what it starts in the background ignore the interrupts of a terminal, not this.
    const std::string line = "setsid \"$@\" & sleep 0.4; kill -TERM -$!; wait $!; echo \"$?\"";
    std::vector<std::string> run{"--to", out, "--format", "png"};
    run.insert(run.end(), 200, large);
    const Finished end = runThroughShell(line, run);
    EXPECT_EQ(end.out, "143\n");
    EXPECT_THAT(end.err, testing::Not(HasSubstr("codec-died")));
}

}  // namespace
}  // namespace tessarine::tests
