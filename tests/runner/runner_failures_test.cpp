#include <csignal>
#include <filesystem>
#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "batch/list_files.h"
#include "runner_fixture.h"

// What a run does about outputs that exist and about pictures that fail.

namespace tessarine::tests {
namespace {

using nlohmann::json;

class RunnerFailures : public Runner {
  protected:
    /// Pictures of which those with these places, from 1, cannot be read.
    std::vector<std::string> pictures(int count, const std::set<int>& bad) {
        std::vector<std::string> all;
        for (int i = 1; i <= count; ++i) {
            const std::string name = "p" + std::to_string(i) + ".ppm";
            if (bad.count(i) == 1) {
                writeFile(in + "/" + name, "no picture");
                all.push_back(in + "/" + name);
            } else {
                all.push_back(grey(name, static_cast<uint8_t>(i)));
            }
        }
        return all;
    }
    static std::vector<std::string> with(std::vector<std::string> words,
                                         const std::vector<std::string>& more) {
        words.insert(words.begin(), more.begin(), more.end());
        return words;
    }
    std::vector<std::string> failedIn(const std::string& file) {
        EXPECT_TRUE(fs::exists(file));
        EXPECT_EQ(fs::file_size(file) % pictureRecordBytes, 0U);
        return readPictureList(file);
    }

    const std::string list = scratch / "failed.qpkl";
    const std::string report = scratch / "report";
};

TEST_F(RunnerFailures, AnOutputThatExistsIsKeptReplacedOrAFailureAsAsked) {
    const std::vector<std::string> two = pictures(2, {});
    const auto runOver = [&](const std::vector<std::string>& more) {
        fs::remove_all(out);
        fs::create_directory(out);
        writeFile(out + "/Sample1.bmp", "mine");
        return runTo(with(two, with(more, {"--report", report})));
    };
    const auto statusOfFirst = [&] {
        return json::parse(linesOf(readFile(report)).at(0)).at("status").get<std::string>();
    };
    for (const std::vector<std::string>& more :
         {std::vector<std::string>{}, std::vector<std::string>{"--on-exists", "keep"}}) {
        EXPECT_EQ(runOver(more).status, 0);
        EXPECT_EQ(statusOfFirst(), "kept");
        EXPECT_EQ(readFile(out + "/Sample1.bmp"), "mine");
    }
    for (const std::vector<std::string>& more :
         {std::vector<std::string>{"--overwrite"},
          std::vector<std::string>{"--on-exists", "overwrite"},
          std::vector<std::string>{"--on-exists", "overwrite", "--overwrite"}}) {
        EXPECT_EQ(runOver(more).status, 0);
        EXPECT_EQ(statusOfFirst(), "saved");
        EXPECT_EQ(levelOf("Sample1.bmp"), 1);
    }
    const Finished failing = runOver({"--on-exists", "fail"});
    EXPECT_EQ(failing.status, 1);
    EXPECT_EQ(statusOfFirst(), "failed");
    EXPECT_EQ(json::parse(linesOf(readFile(report)).at(0)).at("error"), "exists");
    EXPECT_NE(failing.err.find("p1.ppm: exists: "), std::string::npos) << failing.err;
    EXPECT_EQ(readFile(out + "/Sample1.bmp"), "mine");
    EXPECT_EQ(levelOf("Sample2.bmp"), 2) << "the others are saved";
}

TEST_F(RunnerFailures, ADryRunNotesThatAnOutputWhichExistsWouldFail) {
    const std::string a = grey("a.ppm", 10);
    writeFile(out + "/Sample1.bmp", "mine");
    EXPECT_EQ(runTo({"--on-exists", "fail", "--dry-run", a}).out,
              a + " -> " + out + "/Sample1.bmp (exists, fails)\n");
}

TEST_F(RunnerFailures, WishesThatContradictEachOtherAreRefused) {
    const std::string a = grey("a.ppm", 10);
    for (const char* wish : {"keep", "fail"})
        expectRefused(runTo({"--overwrite", "--on-exists", wish, a}), 2,
                      {"--overwrite", "--on-exists", wish, "contradict"});
    expectRefused(runTo({"--on-exists", "ask", a}), 2, {"ask"});
    expectRefused(runTo({"--fail-fast", "--max-failures", "3", a}), 2,
                  {"--fail-fast", "--max-failures 3", "contradict"});
    for (const char* wrong : {"0", "-1", "many", "99999999999"})
        expectRefused(runTo({"--max-failures", wrong, a}), 2, {"--max-failures"});
    EXPECT_EQ(runTo({"--fail-fast", "--max-failures", "1", a}).status, 0);
}

TEST_F(RunnerFailures, TheWindowsRunTakesNoWishThatItCannotFulfil) {
    const std::string a = grey("a.ppm", 10);
    const auto inWindow = [&](std::vector<std::string> words) {
        return runTo(with(std::move(words), {"--mode", "window", a}));
    };
    expectRefused(inWindow({"--on-exists", "fail"}), 2, {"--on-exists fail", "--mode window"});
    expectRefused(inWindow({"--fail-fast"}), 2, {"--fail-fast", "--mode window"});
    expectRefused(inWindow({"--max-failures", "4"}), 2, {"--max-failures", "--mode window"});
    writeFile(out + "/Sample1.bmp", "mine");
    EXPECT_EQ(inWindow({"--on-exists", "keep"}).status, 0);
    EXPECT_EQ(readFile(out + "/Sample1.bmp"), "mine");
    EXPECT_EQ(inWindow({"--on-exists", "overwrite"}).status, 0);
    EXPECT_EQ(levelOf("Sample1.bmp"), 10);
}

TEST_F(RunnerFailures, FailFastBeginsNoPictureBehindTheFirstFailure) {
    const Finished end =
        runTo(with(pictures(9, {3, 5}), {"--fail-fast", "--jobs", "1", "--report", report}));
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp"}));
    EXPECT_NE(end.err.find("stopped by --max-failures 1; 6 of 9 pictures were not begun"),
              std::string::npos)
        << end.err;
    const std::vector<std::string> lines = linesOf(readFile(report));
    ASSERT_EQ(lines.size(), 4U);
    const json summary = json::parse(lines.back()).at("summary");
    EXPECT_EQ(summary.at("pictures"), 9);
    EXPECT_EQ(summary.at("saved"), 2);
    EXPECT_EQ(summary.at("failed"), 1);
    EXPECT_FALSE(summary.at("interrupted")) << "nobody asked it to stop";
}

TEST_F(RunnerFailures, MaxFailuresBeginsNoPictureBehindSoMany) {
    const std::vector<std::string> all = pictures(9, {2, 4, 6});
    EXPECT_EQ(runTo(with(all, {"--max-failures", "2", "--jobs", "1"})).status, 1);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample3.bmp"}));
    const Finished enough = runTo(with(all, {"--max-failures", "4"}));
    EXPECT_EQ(enough.status, 1);
    EXPECT_EQ(outputs().size(), 6U) << "three failures are fewer than four";
    EXPECT_EQ(enough.err.find("stopped"), std::string::npos) << enough.err;
}

TEST_F(RunnerFailures, WithSeveralInFlightThoseUnderWayAreFinished) {
    std::set<int> bad;
    for (int i = 1; i <= 40; ++i)
        bad.insert(i);
    const Finished end =
        runTo(with(pictures(40, bad), {"--fail-fast", "--jobs", "4", "--report", report}));
    EXPECT_EQ(end.status, 1);
    // A picture is begun when one before it has ended, which may have been one that failed.
    EXPECT_LE(linesOf(readFile(report)).size(), 6U) << "four in flight, one more, the summary";
}

TEST_F(RunnerFailures, AnOutputThatExistsCountsAmongTheFailures) {
    writeFile(out + "/Sample1.bmp", "mine");
    const Finished end =
        runTo(with(pictures(3, {}), {"--on-exists", "fail", "--fail-fast", "--jobs", "1"}));
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp"}));
}

TEST_F(RunnerFailures, TheFailedListHoldsWhatFailedAndReadsBack) {
    const std::vector<std::string> all = pictures(6, {2, 5});
    EXPECT_EQ(runTo(with(all, {"--failed-list", list})).status, 1);
    EXPECT_EQ(failedIn(list), (std::vector<std::string>{all[1], all[4]}));
    const Finished again = runTo({"--pictures", list, "--dry-run"});
    EXPECT_EQ(again.status, 0) << again.err;
    const std::vector<std::string> plan = linesOf(again.out);
    ASSERT_EQ(plan.size(), 2U);
    EXPECT_TRUE(plan[1].starts_with(all[4] + " -> ")) << plan[1];
}

TEST_F(RunnerFailures, TheFailedListIsEmptyWhereNothingFailed) {
    writeFile(list, std::string(1000, 'x'));
    EXPECT_EQ(runTo(with(pictures(3, {}), {"--failed-list", list})).status, 0);
    ASSERT_TRUE(fs::exists(list));
    EXPECT_EQ(fs::file_size(list), 0U) << "nothing of an older list stays";
}

TEST_F(RunnerFailures, TheFailedListOfTheWindowsRunIsTheSame) {
    const std::vector<std::string> all = pictures(3, {2});
    EXPECT_EQ(runTo(with(all, {"--failed-list", list, "--mode", "window"})).status, 1);
    EXPECT_EQ(failedIn(list), (std::vector<std::string>{all[1]}));
}

TEST_F(RunnerFailures, TheFailedListHoldsFullPaths) {
    grey("a.ppm", 1);
    const Finished end = runThroughShell(
        "cd " + in + " && exec \"$@\"",
        {"--to", out, "--failed-list", "../failed.qpkl", "a.ppm", "none.ppm", "./none.ppm"});
    EXPECT_EQ(end.status, 1) << end.err;
    EXPECT_EQ(failedIn(list), (std::vector<std::string>{in + "/none.ppm", in + "/./none.ppm"}));
}

TEST_F(RunnerFailures, APathThatNoListCanHoldIsNamed) {
    const std::string longPath = in + "/" + std::string(160, 'n') + ".ppm";
    const std::string blank = in + "/blank.ppm ";
    const std::string ordinary = in + "/none.ppm";
    const Finished end = runTo({"--failed-list", list, longPath, blank, ordinary});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(failedIn(list), (std::vector<std::string>{ordinary}));
    for (const std::string& path : {longPath, blank})
        EXPECT_NE(end.err.find("--failed-list: '" + path + "' is not in it"), std::string::npos)
            << end.err;
}

TEST_F(RunnerFailures, AnInterruptedRunLeavesTheListOfWhatHadFailed) {
    const std::string large = picture("large.ppm", randomBuffer(900, 700, 3));
    std::vector<std::string> words{TESSARINE_BATCH, "--to",          out,  "--format",      "png",
                                   "--quiet",       "--failed-list", list, in + "/none.ppm"};
    words.insert(words.end(), 200, large);
    for (const auto& [signal, status] : {std::pair(SIGTERM, 143), std::pair(SIGKILL, -SIGKILL)}) {
        fs::remove_all(out);
        fs::create_directory(out);
        const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
        const bool begun = waitForAnOutput(running);
        running.kill(signal);
        EXPECT_EQ(running.wait(), status);
        EXPECT_TRUE(begun);
        EXPECT_EQ(failedIn(list), (std::vector<std::string>{in + "/none.ppm"}));
    }
}

TEST_F(RunnerFailures, AFailedListThatWouldDestroySomethingIsRefused) {
    const std::vector<std::string> all = pictures(2, {});
    const std::string own = scratch / "own.qpkl";
    writePictureList(own, all);
    const auto refusedFor = [&](const std::string& file, const std::vector<std::string>& words) {
        std::vector<std::string> line{"--failed-list", file, "--pictures", own};
        line.insert(line.end(), words.begin(), words.end());
        expectRefused(runTo(line), 3, {"--failed-list", file});
    };
    refusedFor(own, {});
    refusedFor(all[0], {});
    refusedFor(out + "/Sample2.bmp", {});
    refusedFor(scratch / "no/where.qpkl", {});
    refusedFor(report, {"--report", report});
    writeFile(report, "");
    fs::create_hard_link(report, scratch / "twin");
    refusedFor(scratch / "twin", {"--report", report});
    EXPECT_EQ(readPictureList(own), all);
    expectRefused(runTo({"--failed-list", "", all[0]}), 2, {"--failed-list", "empty"});
}

TEST_F(RunnerFailures, ARefusedRunLeavesOlderReportsAndListsAsTheyAre) {
    const std::string a = grey("a.ppm", 1);
    grey("north/b.ppm", 1);
    writeFile(report, "an older report\n");
    writeFile(list, "an older list\n");
    const std::string nowhere = scratch / "no/where";
    expectRefused(
        runTo({"--report", report, "--failed-list", nowhere, "--keep-tree", "--recursive", in}), 3,
        {"--failed-list", nowhere, "No such file"});
    expectRefused(runTo({"--report", nowhere, "--failed-list", list, a}), 3,
                  {"--report", nowhere, "No such file"});
    EXPECT_EQ(readFile(report), "an older report\n");
    EXPECT_EQ(readFile(list), "an older list\n");
    EXPECT_EQ(runTo({"--report", report, "--failed-list", list, a}).status, 0);
    EXPECT_EQ(linesOf(readFile(report)).size(), 2U);
    EXPECT_EQ(readFile(list), "");
}

TEST_F(RunnerFailures, AFailedListNamedLikeStandardOutputIsAFile) {
    const Finished end = runThroughShell("cd " + out + " && exec \"$@\"",
                                         {"--to", in, "--failed-list", "-", in + "/none.ppm"});
    EXPECT_EQ(end.status, 1) << end.err;
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(failedIn(out + "/-"), (std::vector<std::string>{in + "/none.ppm"}));
}

TEST_F(RunnerFailures, AFailedListThatIsNotTakenIsTold) {
    const Finished end = runTo({"--failed-list", "/dev/full", in + "/none.ppm"});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.err.find("--failed-list: '/dev/full' could not be written whole"),
              std::string::npos)
        << end.err;
}

TEST_F(RunnerFailures, TheSameCommandAgainDoesWhatFailedUnderItsOwnNumbersAndNothingElse) {
    const std::vector<std::string> all = pictures(5, {2, 4});
    std::vector<std::string> words = with(all, {"--apply", "Noise:Intensity=40"});
    EXPECT_EQ(runTo(words).status, 1);
    const fs::file_time_type before = fs::last_write_time(out + "/Sample1.bmp");
    grey("p2.ppm", 2);
    grey("p4.ppm", 4);
    const Finished again = runTo(with(words, {"--report", report}));
    EXPECT_EQ(again.status, 0) << again.err;
    const json summary = json::parse(linesOf(readFile(report)).back()).at("summary");
    EXPECT_EQ(summary.at("saved"), 2);
    EXPECT_EQ(summary.at("kept"), 3);
    EXPECT_EQ(fs::last_write_time(out + "/Sample1.bmp"), before);
    const std::string second = readFile(out + "/Sample4.bmp");
    fs::remove_all(out);
    fs::create_directory(out);
    EXPECT_EQ(runTo(words).status, 0);
    EXPECT_TRUE(readFile(out + "/Sample4.bmp") == second)
        << "as if all had been readable the first time";
}

}  // namespace
}  // namespace tessarine::tests
