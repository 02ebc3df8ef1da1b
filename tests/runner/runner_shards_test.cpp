#include <csignal>
#include <filesystem>
#include <map>
#include <optional>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "imagefiles/disk.h"
#include "runner_fixture.h"
#include "support/other_disks.h"

// The program with a share of a basket.

namespace tessarine::tests {
namespace {

using nlohmann::json;

class RunnerShards : public Runner {
  protected:
    RunnerShards() {
        fs::create_directory(whole);
        for (int i = 0; i < 11; ++i)
            picture("p" + std::to_string(10 + i) + ".ppm", randomBuffer(30 + i, 20, i));
        writeFile(in + "/p13x.ppm", "no picture");
    }
    /// Two functions that hang on the picture's number, over all of `in`.
    Finished runNoise(const std::string& to, std::vector<std::string> words) {
        words.insert(words.begin(), {"--to", to, "--format", "png", "--apply", "Noise:Intensity=40",
                                     "--apply", "Diffuse", in});
        return run(std::move(words));
    }
    static std::map<std::string, std::string> filesIn(const std::string& folder) {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::directory_iterator(folder))
            all[entry.path().filename()] = readFile(entry.path());
        return all;
    }
    json summaryOf(const std::string& report) {
        return json::parse(linesOf(readFile(report)).back()).at("summary");
    }

    const std::string whole = scratch / "whole";
};

TEST_F(RunnerShards, TheUnionOfTheSharesIsTheWholeRunByteForByte) {
    ASSERT_EQ(runNoise(whole, {}).status, 1);
    const auto expected = filesIn(whole);
    ASSERT_EQ(expected.size(), 11U);
    for (const int count : {1, 3, 5, 40}) {
        fs::remove_all(out);
        fs::create_directory(out);
        int failed = 0;
        for (int index = count; index-- > 0;) {
            const Finished end =
                runNoise(out, {"--shard", std::to_string(index) + "/" + std::to_string(count)});
            EXPECT_TRUE(end.status == 0 || end.status == 1) << end.err;
            failed += end.status;
        }
        EXPECT_EQ(failed, 1) << "the unreadable picture belongs to one share";
        EXPECT_TRUE(filesIn(out) == expected) << count;
    }
}

TEST_F(RunnerShards, TheReportTellsNumbersOfTheWholeBasketAndWhichShareItWas) {
    const std::string report = scratch / "report";
    std::set<int> numbers;
    for (const char* shard : {"0/2", "1/2"}) {
        runNoise(out, {"--shard", shard, "--report", report});
        const std::vector<std::string> lines = linesOf(readFile(report));
        ASSERT_EQ(lines.size(), 7U);
        for (size_t i = 0; i + 1 < lines.size(); ++i) {
            const json entry = json::parse(lines[i]);
            const int number = entry.at("number");
            numbers.insert(number);
            EXPECT_EQ(entry.at("output"), out + "/Sample" + std::to_string(number) + ".png");
        }
        const json summary = summaryOf(report);
        EXPECT_EQ(summary.at("pictures"), 6);
        EXPECT_EQ(summary.at("basket"), 12);
        EXPECT_EQ(summary.at("shard"), shard);
    }
    EXPECT_EQ(numbers.size(), 12U);
    EXPECT_EQ(*numbers.rbegin(), 12);
    runNoise(out, {"--report", report});
    EXPECT_EQ(summaryOf(report).at("basket"), 12);
    EXPECT_FALSE(summaryOf(report).contains("shard")) << "the whole basket is no share";
}

TEST_F(RunnerShards, AnEmptyShareIsDoneAndSaysSo) {
    const Finished end =
        run({"--to", out, in + "/p10.ppm", "--shard", "0/2", "--report", scratch / "a"});
    const Finished other =
        run({"--to", out, in + "/p10.ppm", "--shard", "1/2", "--report", scratch / "b"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(other.status, 0) << other.err;
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.jpg"}));
    EXPECT_EQ(summaryOf(scratch / "a").at("pictures").get<int>() +
                  summaryOf(scratch / "b").at("pictures").get<int>(),
              1);
}

TEST_F(RunnerShards, ADryRunTellsTheShareAlone) {
    std::set<std::string> planned;
    for (const char* shard : {"0/3", "1/3", "2/3"}) {
        const Finished end = runNoise(out, {"--shard", shard, "--dry-run"});
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_EQ(linesOf(end.out).size(), 4U) << end.out;
        for (const std::string& line : linesOf(end.out))
            planned.insert(line);
    }
    const std::vector<std::string> all = linesOf(runNoise(out, {"--dry-run"}).out);
    EXPECT_EQ(planned, std::set<std::string>(all.begin(), all.end()));
    EXPECT_TRUE(outputs().empty());
}

TEST_F(RunnerShards, AutoTakesItsShareFromTheEnvironment) {
    const std::vector<std::string> words{"--to", out,       in,         "--shard",
                                         "auto", "--quiet", "--dry-run"};
    const auto planOf = [&](const std::string& variables) {
        return runThroughShell("exec env " + variables + " \"$@\"", words);
    };
    const Finished slurm = planOf(
        "SLURM_ARRAY_TASK_ID=3 SLURM_ARRAY_TASK_MIN=1 SLURM_ARRAY_TASK_MAX=4 "
        "SLURM_ARRAY_TASK_STEP=1 SLURM_ARRAY_TASK_COUNT=4");
    const Finished kubernetes = planOf("JOB_COMPLETION_INDEX=2 TESSARINE_SHARDS=4");
    const Finished batch = planOf("AWS_BATCH_JOB_ARRAY_INDEX=2 AWS_BATCH_JOB_ARRAY_SIZE=4");
    const Finished named = run({"--to", out, in, "--shard", "2/4", "--quiet", "--dry-run"});
    EXPECT_EQ(linesOf(named.out).size(), 3U);
    for (const Finished& end : {slurm, kubernetes, batch}) {
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_EQ(end.out, named.out);
    }
    expectRefused(planOf("-u SLURM_ARRAY_TASK_ID -u JOB_COMPLETION_INDEX"), 2, {"--shard: auto"});
    expectRefused(planOf("JOB_COMPLETION_INDEX=2"), 2, {"TESSARINE_SHARDS"});
}

TEST_F(RunnerShards, AWrongShareIsRefusedAndSoIsOneOfTheWindowsRun) {
    const std::string a = in + "/p10.ppm";
    expectRefused(runTo({"--shard", "2/2", a}), 2, {"--shard", "2/2", "0 to N-1"});
    expectRefused(runTo({"--shard", "", a}), 2, {"--shard"});
    expectRefused(runTo({"--shard", "0/2", "--mode", "window", a}), 2,
                  {"--shard", "--mode window", "--mode independent"});
}

TEST_F(RunnerShards, WhatDestroysPicturesOfOneShareIsRefusedInAll) {
    // Sample2.ppm is picture 1, and the output of picture 2.
    const std::string first = picture("Sample2.ppm", randomBuffer(5, 5, 1));
    const std::string second = in + "/p10.ppm";
    for (const char* shard : {"0/2", "1/2"}) {
        const Finished end =
            run({"--to", in, "--format", "ppm", "--overwrite", "--shard", shard, first, second});
        EXPECT_EQ(end.status, 3) << shard;
        EXPECT_NE(end.err.find("Sample2.ppm"), std::string::npos) << end.err;
    }
    // Not there yet, and to be made by another share.
    for (const char* shard : {"0/2", "1/2"}) {
        const Finished end =
            run({"--to", out, "--format", "ppm", "--shard", shard, second, out + "/Sample1.ppm"});
        EXPECT_EQ(end.status, 3) << shard;
        EXPECT_NE(end.err.find("Sample1.ppm"), std::string::npos) << end.err;
    }
    EXPECT_TRUE(outputs().empty());
}

TEST_F(RunnerShards, AReportOverAnyPictureOfTheBasketIsRefusedInAll) {
    for (const char* shard : {"0/2", "1/2"})
        expectRefused(runTo({"--shard", shard, "--report", in + "/p10.ppm", in}), 3,
                      {"--report", "a picture"});
}

TEST_F(RunnerShards, SharesOfTheFolderThatTheySaveIntoAreRefused) {
    // The second would find the first one's outputs among the pictures.
    for (const std::string& folder : {in, in + "/../in"}) {
        const Finished end = run({"--to", in, "--shard", "0/2", folder});
        EXPECT_EQ(end.status, 3);
        EXPECT_NE(end.err.find("is the destination and holds pictures"), std::string::npos)
            << end.err;
    }
    fs::create_directory(in + "/below");
    const std::string below = in + "/below";
    EXPECT_EQ(run({"--to", below, "--shard", "0/2", "--recursive", in}).status, 3);
    EXPECT_EQ(
        run({"--to", below, "--shard", "0/2", "--recursive", "--from", "-"}, in + "\n").status, 3);
    EXPECT_EQ(run({"--to", below, "--shard", "0/2", "--quiet", in}).err.find("--shard"),
              std::string::npos)
        << "without what is below it, the folder does not change";
    EXPECT_EQ(run({"--to", in, "--shard", "0/1", in + "/p10.ppm"}).status, 0)
        << "a picture that is named stays where it is in the list";
}

TEST_F(RunnerShards, SharesOfAFolderThatTheTreeOfOutputsLeadsToAreRefused) {
    grey("north/a.ppm", 10);
    grey("north/far/b.ppm", 20);
    const std::string north = in + "/north";
    const auto share = [&](std::vector<std::string> words) {
        words.insert(words.begin(),
                     {"--format", "bmp", "--quiet", "--shard", "0/2", "--keep-tree"});
        return run(std::move(words));
    };
    const auto expectRefusedFor = [&](const std::vector<std::string>& words,
                                      const std::string& folder) {
        const Finished end = share(words);
        EXPECT_EQ(end.status, 3) << end.err;
        EXPECT_NE(end.err.find(folder + "' is to hold outputs and is searched"), std::string::npos)
            << end.err;
    };
    fs::create_directory_symlink(in, scratch / "door");
    // The destination itself is not searched; the outputs lie beside the pictures all the same.
    for (const std::string& to : {in, scratch / "door", in + "/../in"}) {
        expectRefusedFor({"--to", to, "--below", in, "--recursive", north}, to + "/north");
        expectRefusedFor({"--to", to, "--below", in, north}, to + "/north");
    }
    // A folder that is yet to be made below one that is searched with all in it.
    fs::create_directories(scratch / "other/north/new");
    writePixmap(scratch / "other/north/new/c.ppm", plain(6, 4, {1, 2, 3, 0}));
    const std::string other = scratch / "other";
    expectRefusedFor({"--to", in, "--recursive", north + "/far", other, north}, in + "/north/new");
    EXPECT_FALSE(fs::exists(in + "/north/new"));
    // A list does not change, and what is searched may lie beside what is saved into.
    EXPECT_EQ(share({"--to", in, "--below", in, north + "/a.ppm"}).status, 0);
    EXPECT_EQ(share({"--to", out, "--below", in, "--recursive", north}).status, 0);
}

TEST_F(RunnerShards, AShareLeavesTheDraftsOfOneThatRuns) {
    const std::string large = picture("large.ppm", randomBuffer(1500, 1200, 3));
    const std::vector<std::string> both{"--to", out, "--format", "png", "--quiet", large, large};
    ASSERT_EQ(run({"--to", whole, "--format", "png", "--quiet", large, large}).status, 0);
    const int end = inChild([&] {
        // So that drafts have names.
        if (!refuseUnnamedFiles()) return noDisk;
        std::vector<std::string> words = both;
        words.insert(words.begin(), TESSARINE_BATCH);
        words.insert(words.end(), {"--shard", "0/2"});
        // It is stopped while its draft is there, which a busy machine may miss.
        std::optional<Running> first;
        std::set<std::string> drafts;
        for (int tries = 0; tries < 10; ++tries) {
            fs::remove_all(out);
            fs::create_directory(out);
            first.emplace(words, "/dev/null", scratch / "stdout", scratch / "stderr");
            if (!waitForAnOutput(*first)) return 1;
            first->kill(SIGSTOP);
            drafts = outputs();
            if (drafts.size() == 1 && Draft::isDraft(*drafts.begin())) break;
            first->kill(SIGKILL);
            first->wait();
        }
        EXPECT_EQ(drafts.size(), 1U);
        EXPECT_TRUE(Draft::isDraft(*drafts.begin())) << *drafts.begin();
        words.back() = "1/2";
        EXPECT_EQ(Running(words, "/dev/null", "/dev/null", scratch / "err2").wait(), 0)
            << readFile(scratch / "err2");
        EXPECT_EQ(outputs().size(), 2U);
        EXPECT_TRUE(outputs().count(*drafts.begin()) == 1) << "the draft of a run that lives";
        first->kill(SIGCONT);
        EXPECT_EQ(first->wait(), 0) << readFile(scratch / "stderr");
        return HasFailure() ? 1 : 0;
    });
    if (end == noDisk) GTEST_SKIP() << "system calls cannot be refused here";
    EXPECT_EQ(end, 0);
    EXPECT_TRUE(filesIn(out) == filesIn(whole));
}

}  // namespace
}  // namespace tessarine::tests
