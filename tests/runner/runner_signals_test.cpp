#include <csignal>
#include <filesystem>
#include <random>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "runner_fixture.h"

// Runs that are asked to stop, or are killed.

namespace tessarine::tests {
namespace {

using nlohmann::json;

/// Runs that take long enough to be met under way.
class RunnerUnderWay : public Runner {
  protected:
    std::vector<std::string> longRun(size_t pictures) {
        const std::string large = picture("large.ppm", randomBuffer(900, 700, 3));
        std::vector<std::string> words{
            TESSARINE_BATCH, "--to", out, "--format", "png", "--report", scratch / "report"};
        words.insert(words.end(), pictures, large);
        return words;
    }
    /// A signal stops the run behind a whole picture, and all that was done is told.
    void expectToStop(int signal) {
        const Running running(longRun(200), "/dev/null", scratch / "stdout", scratch / "stderr");
        const bool begun = waitForAnOutput(running);
        running.kill(signal);
        EXPECT_EQ(running.wait(), 130);
        ASSERT_TRUE(begun) << readFile(scratch / "stderr");
        const std::vector<std::string> report = linesOf(readFile(scratch / "report"));
        ASSERT_GE(report.size(), 2U);
        EXPECT_LT(report.size(), 200U);
        EXPECT_EQ(outputs().size(), report.size() - 1);
        const json summary = json::parse(report.back()).at("summary");
        EXPECT_TRUE(summary.at("interrupted"));
        EXPECT_EQ(summary.at("pictures"), 200);
        EXPECT_EQ(summary.at("saved"), report.size() - 1);
        EXPECT_NE(readFile(scratch / "stderr").find("interrupted"), std::string::npos);
        for (const std::string& name : outputs()) {
            const std::string bytes = readFile(out + "/" + name);
            ASSERT_GT(bytes.size(), 12U);
            EXPECT_EQ(bytes.substr(bytes.size() - 8, 4), "IEND") << name;
        }
    }
};

TEST_F(RunnerUnderWay, AnInterruptStopsItWith130AndWholeOutputs) { expectToStop(SIGINT); }

TEST_F(RunnerUnderWay, ATerminationStopsItWith130AndWholeOutputs) { expectToStop(SIGTERM); }

TEST_F(RunnerUnderWay, AHangUpStopsItWith130AndWholeOutputs) { expectToStop(SIGHUP); }

TEST_F(RunnerUnderWay, AHangUpThatWasIgnoredStaysIgnored) {
    std::vector<std::string> words = longRun(6);
    words.insert(words.begin(), {"/bin/sh", "-c", "trap '' HUP; exec \"$@\"", "sh"});
    const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
    const bool begun = waitForAnOutput(running);
    const bool before = !running.hasEnded();
    running.kill(SIGHUP);
    EXPECT_EQ(running.wait(), 0) << readFile(scratch / "stderr");
    EXPECT_TRUE(begun && before) << "the signal found no run";
    EXPECT_EQ(outputs().size(), 6U);
}

TEST_F(RunnerUnderWay, AKilledRunLeavesNoPartialFileUnderAnOutputsName) {
    const std::string large = picture("large.ppm", randomBuffer(500, 400, 3));
    std::vector<std::string> words{TESSARINE_BATCH, "--to", out, "--format", "bmp", "--overwrite"};
    for (int i = 0; i < 60; ++i)
        words.push_back(large);
    std::mt19937 random(11);
    int outputsSeen = 0;
    for (int round = 0; round < 50; ++round) {
        fs::remove_all(out);
        fs::create_directory(out);
        const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 250000));
        running.kill(SIGKILL);
        running.wait();
        for (const std::string& name : outputs()) {
            if (name.starts_with(".tessarine-")) continue;
            EXPECT_EQ(fs::file_size(out + "/" + name), 54U + 500 * 400 * 3) << name;
            ++outputsSeen;
        }
    }
    EXPECT_GT(outputsSeen, 0);
}

}  // namespace
}  // namespace tessarine::tests
