#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "imagefiles/disk.h"
#include "runner_fixture.h"
#include "support/other_disks.h"

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
    void expectToStop(int signal, int status, const std::string& mode = "independent") {
        std::vector<std::string> words = longRun(200);
        words.insert(words.end(), {"--mode", mode});
        const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
        const bool begun = waitForAnOutput(running);
        // Twice at once is one wish.
        running.kill(signal);
        running.kill(signal);
        EXPECT_EQ(running.wait(), status);
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

TEST_F(RunnerUnderWay, AnInterruptStopsItWith130AndWholeOutputs) { expectToStop(SIGINT, 130); }

TEST_F(RunnerUnderWay, ATerminationStopsItWith143AndWholeOutputs) { expectToStop(SIGTERM, 143); }

TEST_F(RunnerUnderWay, AHangUpStopsItWith130AndWholeOutputs) { expectToStop(SIGHUP, 130); }

TEST_F(RunnerUnderWay, InWindowModeAnInterruptStopsItLikewise) {
    expectToStop(SIGINT, 130, "window");
    const std::vector<std::string> overview = linesOf(readFile(scratch / "stdout"));
    ASSERT_FALSE(overview.empty());
    EXPECT_EQ(overview.back(), " Processing Completed!");
}

TEST_F(RunnerUnderWay, InWindowModeATerminationStopsItLikewise) {
    expectToStop(SIGTERM, 143, "window");
}

TEST_F(RunnerUnderWay, ASecondSignalOfWhateverKindEndsItAtOnce) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer holds signals back while a filter calculates";
#endif
    std::vector<std::string> words = longRun(3);
    words.insert(words.end(), {"--jobs", "1"});
    // Each picture takes seconds, to be under way still when the second signal comes.
#ifdef __SANITIZE_ADDRESS__
    constexpr int functions = 250;
#else
    constexpr int functions = 2500;
#endif
    for (int i = 0; i < functions; ++i)
        words.insert(words.end(), {"--apply", "Contrast:Level=2"});
    for (const auto& [first, second] : {std::pair(SIGINT, SIGTERM), std::pair(SIGTERM, SIGTERM)}) {
        fs::remove_all(out);
        fs::create_directory(out);
        const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
        const bool begun = waitForAnOutput(running);
        // Between two pictures the first signal alone would end it.
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        running.kill(first);
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        running.kill(second);
        EXPECT_EQ(running.wait(), -second);
        ASSERT_TRUE(begun) << readFile(scratch / "stderr");
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.png"}));
        // No summary: there was no time for one.
        EXPECT_EQ(linesOf(readFile(scratch / "report")).size(), 1U);
    }
}

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

/// Runs that are killed at any moment, and what the next run makes of it.
class RunnerKilled : public Runner {
  protected:
    RunnerKilled() {
        for (const int number : {1, 2, 3, 4, 5, 6})
            words_.push_back(picture(std::to_string(number) + ".ppm",
                                     randomBuffer(100 + 20 * number, 100, number)));
        fs::create_directory(temporary_);
        setenv("TMPDIR", temporary_.c_str(), 1);
    }
    ~RunnerKilled() override {
        if (before_.empty())
            unsetenv("TMPDIR");
        else
            setenv("TMPDIR", before_.c_str(), 1);
    }
    Finished runToTheEnd() { return run(words_); }
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const std::string& name : outputs())
            all[name] = readFile(out + "/" + name);
        return all;
    }
    std::set<std::string> temporaryFiles() const {
        std::set<std::string> all;
        for (const auto& entry : fs::directory_iterator(temporary_))
            all.insert(entry.path().filename().string());
        return all;
    }
    /// The time that a whole run takes, and what it leaves.
    std::chrono::microseconds measure() {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(runToTheEnd().status, 0);
        const auto end = std::chrono::steady_clock::now();
        whole_ = files();
        EXPECT_EQ(whole_.size(), 6U);
        EXPECT_TRUE(temporaryFiles().empty());
        return std::chrono::duration_cast<std::chrono::microseconds>(end - start);
    }
    /// Kills a run after a while. Whatever has an output's name then is whole.
    /// \return whether the run was still under way
    bool killAfter(std::chrono::microseconds pause) {
        std::vector<std::string> words = words_;
        words.insert(words.begin(), TESSARINE_BATCH);
        const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
        std::this_thread::sleep_for(pause);
        running.kill(SIGKILL);
        const bool killed = running.wait() == -SIGKILL;
        for (const auto& [name, bytes] : files()) {
            if (Draft::isDraft(name)) continue;
            EXPECT_TRUE(whole_.count(name) == 1 && bytes == whole_.at(name)) << name;
        }
        return killed;
    }
    void expectTheNextRunToMendAll() {
        const Finished end = runToTheEnd();
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_TRUE(files() == whole_) << "another outcome than that of an undisturbed run";
        EXPECT_EQ(temporaryFiles(), std::set<std::string>{});
    }
    /// Kills runs at moments that are spread over the length of a run.
    void killRuns(int rounds, uint32_t seed) {
        const std::chrono::microseconds length = measure();
        std::mt19937 random(seed);
        int killed = 0;
        for (int round = 0; round < rounds && !HasFailure(); ++round) {
            // Every other time the outputs are there already and are replaced.
            if (round % 2 == 0) {
                fs::remove_all(out);
                fs::create_directory(out);
            }
            killed += killAfter(std::chrono::microseconds(random() % length.count())) ? 1 : 0;
            expectTheNextRunToMendAll();
        }
        EXPECT_GT(killed, rounds / 2) << "too few of them were met under way";
    }

    const std::string before_ = std::getenv("TMPDIR") == nullptr ? "" : std::getenv("TMPDIR");
    const std::string temporary_ = scratch / "temporary";
    std::vector<std::string> words_{
        "--to", out, "--format", "png", "--apply", "Noise:Intensity=40", "--overwrite", "--quiet"};
    std::map<std::string, std::string> whole_;
};

/// Rounds of the ordinary test; more of them for a longer look.
int killRounds() {
    const char* asked = std::getenv("TESSARINE_KILL_ROUNDS");
    return asked == nullptr ? 40 : std::atoi(asked);
}

TEST_F(RunnerKilled, TheNextRunGivesWhatAnUndisturbedOneGivesAndTidiesUp) {
    killRuns(killRounds(), 11);
}

TEST_F(RunnerKilled, TheSameHoldsWhereTheDiskKnowsNoFilesWithoutAName) {
    setenv("TMPDIR", scratch.path().c_str(), 1);
    const int end = inChild([&] {
        if (!refuseUnnamedFiles()) return noDisk;
        setenv("TMPDIR", temporary_.c_str(), 1);
        killRuns(killRounds() / 4, 12);
        return HasFailure() ? 1 : 0;
    });
    if (end == noDisk) GTEST_SKIP() << "system calls cannot be refused here";
    EXPECT_EQ(end, 0);
}

TEST_F(RunnerKilled, DraftsThatNobodyHoldsGoWhenTheNextIndependentRunStarts) {
    const std::string left = Draft::namePrefix() + "0123456789abcdef.png";
    const std::string foreign = ".tessarine-0123456789abcdef.png";
    writeFile(out + "/" + left, "half");
    writeFile(out + "/" + foreign, "half");
    const Draft held(out + "/held.png", Draft::Kind::hidden);
    const std::string heldName = fs::path(held.path()).filename();
    const auto stands = [&](const std::string& name) { return fs::exists(out + "/" + name); };
    std::vector<std::string> words = words_;
    words.push_back("--dry-run");
    EXPECT_EQ(run(words).status, 0);
    EXPECT_TRUE(stands(left)) << "a dry run changes nothing";
    words.back() = "--mode=window";
    EXPECT_EQ(run(words).status, 0);
    EXPECT_TRUE(stands(left)) << "the window's run knows no drafts";
    EXPECT_EQ(runToTheEnd().status, 0);
    EXPECT_FALSE(stands(left));
    EXPECT_TRUE(stands(foreign)) << "another machine may still be at it";
    EXPECT_TRUE(stands(heldName)) << "its writer lives";
}

}  // namespace
}  // namespace tessarine::tests
