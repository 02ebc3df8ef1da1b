#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <random>
#include <sys/stat.h>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "runner/shards.h"
#include "runner_fixture.h"

// A whole basket by shards, two of which are killed and run again.

namespace tessarine::tests {
namespace {

using nlohmann::json;

class RunnerShardsKilled : public Runner {
  protected:
    static constexpr int pictures = 400;
    static constexpr int shards = 8;
    static constexpr int jobs = 3;

    RunnerShardsKilled() {
        fs::create_directory(whole);
        std::string basket;
        for (int i = 1; i <= pictures; ++i) {
            const std::string name = "p" + std::to_string(i) + ".ppm";
            if (isBad(i))
                writeFile(in + "/" + name, "no picture");
            else
                picture(name, randomBuffer(90 + i % 40, 70, static_cast<uint32_t>(i)));
            basket += in + "/" + name + "\n";
        }
        writeFile(list, basket);
    }

    static bool isBad(int number) { return number % 17 == 5; }

    std::vector<std::string> command(const std::string& to, const std::string& report) const {
        return {TESSARINE_BATCH,
                "--from",
                list,
                "--to",
                to,
                "--format",
                "png",
                "--apply",
                "Noise:Intensity=40",
                "--apply",
                "Sharpen",
                "--jobs",
                std::to_string(jobs),
                "--quiet",
                "--report",
                report};
    }
    /// A shard's report, of the first run or the second.
    std::string reportOf(int shard, int attempt) const {
        return scratch / ("report-" + std::to_string(shard) + "-" + std::to_string(attempt));
    }
    Running start(int shard, int attempt) const {
        std::vector<std::string> words = command(out, reportOf(shard, attempt));
        words.insert(words.end(),
                     {"--shard", std::to_string(shard) + "/" + std::to_string(shards)});
        return Running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
    }
    /// The pictures of a shard, by number, whose outputs stand, with their files' identities.
    std::map<size_t, std::pair<ino_t, timespec>> standing(int shard) const {
        std::map<size_t, std::pair<ino_t, timespec>> all;
        for (const size_t place : Shard{shard, shards}.placesIn(pictures)) {
            struct stat status {};
            const std::string output = out + "/Sample" + std::to_string(place + 1) + ".png";
            if (::stat(output.c_str(), &status) == 0)
                all[place + 1] = {status.st_ino, status.st_mtim};
        }
        return all;
    }
    /// Kills a shard once it has saved a few pictures.
    void killUnderWay(int shard) const {
        constexpr size_t enough = 8;
        const Running running = start(shard, 1);
        while (standing(shard).size() < enough && !running.hasEnded())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        running.kill(SIGKILL);
        ASSERT_EQ(running.wait(), -SIGKILL) << "it ended before it was killed";
    }
    static std::vector<json> entriesOf(const std::string& report) {
        std::vector<json> entries;
        const std::string text = readFile(report);
        for (const std::string& line : linesOf(text.substr(0, text.rfind('\n') + 1)))
            if (json entry = json::parse(line); !entry.contains("summary"))
                entries.push_back(std::move(entry));
        return entries;
    }
    static std::map<std::string, std::string> filesIn(const std::string& folder) {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::directory_iterator(folder))
            all[entry.path().filename()] = readFile(entry.path());
        return all;
    }

    const std::string whole = scratch / "whole";
    const std::string list = scratch / "basket.txt";
};

TEST_F(RunnerShardsKilled, InAnyOrderAndRunAgainTheyGiveTheWholeRunWithoutDoubleWork) {
    const std::string unsharded = scratch / "unsharded";
    ASSERT_EQ(Running(command(whole, unsharded), "/dev/null", scratch / "o", scratch / "e").wait(),
              1);

    std::vector<int> order(shards);
    for (int i = 0; i < shards; ++i)
        order[static_cast<size_t>(i)] = i;
    const auto seed = static_cast<uint32_t>(std::random_device()());
    SCOPED_TRACE(seed);
    std::shuffle(order.begin(), order.end(), std::mt19937(seed));
    const std::vector<int> killed{order[1], order[4]};

    std::vector<std::string> reports{"--merge-reports"};
    for (const int shard : order) {
        reports.push_back(reportOf(shard, 1));
        if (std::find(killed.begin(), killed.end(), shard) != killed.end())
            killUnderWay(shard);
        else
            EXPECT_EQ(start(shard, 1).wait(), 1) << shard;
    }
    const Finished before = run(reports);
    EXPECT_EQ(before.status, 1);
    const json unfinished = json::parse(linesOf(before.out).back()).at("summary");
    EXPECT_GT(unfinished.at("missing"), 0);
    for (const int shard : killed) {
        const json& named = unfinished.at("unfinished_shards");
        EXPECT_NE(std::find(named.begin(), named.end(), shard), named.end()) << shard;
    }

    for (const int shard : killed) {
        const auto stood = standing(shard);
        EXPECT_EQ(start(shard, 2).wait(), 1) << readFile(scratch / "stderr");
        reports.push_back(reportOf(shard, 2));

        // Nothing that stood was touched, and only that was kept.
        const auto stands = standing(shard);
        size_t kept = 0;
        for (const json& entry : entriesOf(reportOf(shard, 2)))
            if (entry.at("status") == "kept") {
                ++kept;
                EXPECT_EQ(stood.count(entry.at("number")), 1U) << entry;
            }
        EXPECT_EQ(kept, stood.size());
        for (const auto& [number, file] : stood) {
            EXPECT_EQ(stands.at(number).first, file.first) << number;
            EXPECT_EQ(stands.at(number).second.tv_sec, file.second.tv_sec) << number;
            EXPECT_EQ(stands.at(number).second.tv_nsec, file.second.tv_nsec) << number;
        }
        // What the killed run had told of was so.
        for (const json& entry : entriesOf(reportOf(shard, 1)))
            if (entry.at("status") == "saved") {
                EXPECT_EQ(stood.count(entry.at("number")), 1U) << entry;
            }
    }

    EXPECT_TRUE(filesIn(out) == filesIn(whole)) << "other outputs than those of the whole run";

    const Finished merged = run(reports);
    EXPECT_EQ(merged.status, 1) << "the unreadable ones";
    const std::vector<std::string> lines = linesOf(merged.out);
    ASSERT_EQ(lines.size(), pictures + 1U);
    const std::vector<json> expected = entriesOf(unsharded);
    ASSERT_EQ(expected.size(), static_cast<size_t>(pictures));
    for (size_t i = 0; i < pictures; ++i) {
        const json entry = json::parse(lines[i]);
        for (const char* what : {"number", "input", "error", "message"})
            EXPECT_EQ(entry.at(what), expected[i].at(what)) << entry;
        // A picture that was saved when its run was killed, before it could be told.
        if (entry.at("status") == "kept") {
            const int owner = Shard::ownerOf(i, shards);
            EXPECT_NE(std::find(killed.begin(), killed.end(), owner), killed.end()) << entry;
        }
        EXPECT_EQ(entry.at("status") == "failed", isBad(static_cast<int>(i) + 1)) << entry;
    }
    const json all = json::parse(lines.back()).at("summary");
    EXPECT_EQ(all.at("missing"), 0);
    EXPECT_EQ(all.at("basket"), pictures);
    EXPECT_EQ(all.at("saved").get<int>() + all.at("kept").get<int>() + all.at("failed").get<int>(),
              pictures);
}

TEST_F(RunnerShardsKilled, NoPictureIsSavedTwiceInAllReportsTogether) {
    for (const int shard : {2, 6})
        killUnderWay(shard);
    for (int shard = 0; shard < shards; ++shard)
        EXPECT_EQ(start(shard, 2).wait(), 1);
    std::map<int, int> saved;
    for (int shard = 0; shard < shards; ++shard)
        for (const int attempt : {1, 2})
            if (fs::exists(reportOf(shard, attempt)))
                for (const json& entry : entriesOf(reportOf(shard, attempt)))
                    if (entry.at("status") == "saved") ++saved[entry.at("number")];
    for (const auto& [number, times] : saved)
        EXPECT_EQ(times, 1) << "picture " << number;
    EXPECT_EQ(outputs().size(), static_cast<size_t>(pictures - pictures / 17 - 1));
}

}  // namespace
}  // namespace tessarine::tests
