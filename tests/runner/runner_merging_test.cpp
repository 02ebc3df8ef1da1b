#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "runner/shards.h"
#include "runner_fixture.h"

// One report made of several.

namespace tessarine::tests {
namespace {

using nlohmann::json;

class RunnerMerging : public Runner {
  protected:
    static std::string entry(int number, const std::string& status,
                             const std::string& message = {}) {
        const std::string name = std::to_string(number);
        return R"({"number":)" + name + R"(,"input":"in/)" + name +
               R"(.ppm","output":"out/Sample)" + name + R"(.png","status":")" + status +
               R"(","error":"","message":")" + message +
               R"(","width":3,"height":2,"depth":24,"ms":1,"bytes":7})" + "\n";
    }
    static std::string summary(int basket, const std::string& shard = {}) {
        json object = {{"pictures", 1}, {"saved", 1},           {"kept", 0},       {"failed", 0},
                       {"ms", 5},       {"interrupted", false}, {"basket", basket}};
        if (!shard.empty()) object["shard"] = shard;
        return json{{"summary", object}}.dump() + "\n";
    }
    std::string file(const std::string& name, const std::string& text) {
        writeFile(scratch / name, text);
        return scratch / name;
    }
    Finished merge(const std::vector<std::string>& files,
                   const std::vector<std::string>& more = {}) {
        std::vector<std::string> words{"--merge-reports"};
        words.insert(words.end(), files.begin(), files.end());
        words.insert(words.end(), more.begin(), more.end());
        return run(words);
    }
    static json summaryOf(const Finished& end) {
        return json::parse(linesOf(end.out).back()).at("summary");
    }
    static json pictureOf(const Finished& end, size_t place) {
        return json::parse(linesOf(end.out).at(place));
    }
    void expectRefusedMerge(const std::vector<std::string>& files,
                            const std::vector<std::string>& words) {
        const Finished end = merge(files);
        EXPECT_EQ(end.status, 3) << end.err;
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(linesOf(end.err).size(), 1U) << end.err;
        for (const std::string& word : words)
            EXPECT_NE(end.err.find(word), std::string::npos) << word << " in " << end.err;
    }
};

TEST_F(RunnerMerging, ReportsOfSharesBecomeOneInTheOrderOfNumbersWithOneSummary) {
    const std::string a = file("a", entry(2, "saved") + entry(4, "kept") + summary(4, "1/2"));
    const std::string b = file("b", entry(1, "saved") + entry(3, "saved") + summary(4, "0/2"));
    const Finished end = merge({a, b});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(linesOf(end.out).size(), 5U);
    EXPECT_EQ(end.out.substr(0, end.out.find(R"({"summary")")),
              entry(1, "saved") + entry(2, "saved") + entry(3, "saved") + entry(4, "kept"))
        << "lines as they were";
    const json all = summaryOf(end);
    EXPECT_EQ(all.at("pictures"), 4);
    EXPECT_EQ(all.at("basket"), 4);
    EXPECT_EQ(all.at("saved"), 3);
    EXPECT_EQ(all.at("kept"), 1);
    EXPECT_EQ(all.at("failed"), 0);
    EXPECT_EQ(all.at("missing"), 0);
    EXPECT_EQ(all.at("missing_numbers"), json::array());
    EXPECT_EQ(all.at("interrupted"), false);
    EXPECT_EQ(all.at("ms"), 10);
    EXPECT_EQ(all.at("reports"), 2);
    EXPECT_EQ(all.at("shards"), 2);
    EXPECT_EQ(all.at("unfinished_shards"), json::array());
    EXPECT_EQ(end.err, "3 saved, 1 kept, 0 failed, 0 missing of 4 pictures in 2 reports\n");
    EXPECT_EQ(merge({a, b}, {"--quiet"}).err, "");
}

TEST_F(RunnerMerging, SavedGoesBeforeKeptAndKeptBeforeFailedAndOfTheSameTheLast) {
    const std::string first =
        file("first", entry(1, "failed", "a") + entry(2, "saved", "b") + entry(3, "kept", "c") +
                          entry(4, "failed", "d") + entry(5, "saved", "e"));
    const std::string second =
        file("second", entry(1, "saved", "A") + entry(2, "kept", "B") + entry(3, "failed", "C") +
                           entry(4, "failed", "D") + entry(5, "saved", "E") + summary(5));
    const auto messages = [&](const Finished& end) {
        std::string text;
        for (size_t i = 0; i < 5; ++i)
            text += pictureOf(end, i).at("message").get<std::string>();
        return text;
    };
    EXPECT_EQ(messages(merge({first, second})), "AbcDE");
    EXPECT_EQ(messages(merge({second, first})), "Abcde");
    EXPECT_EQ(merge({first, second}).status, 1) << "picture 4 failed in both";
    EXPECT_EQ(summaryOf(merge({first, second})).at("failed"), 1);
}

TEST_F(RunnerMerging, ALastLineThatWasCutOffIsPassedOver) {
    const std::string whole = entry(1, "saved") + entry(2, "saved");
    const std::string other = file("other", entry(2, "saved") + summary(2));
    // Wherever the run was killed.
    for (size_t length = 0; length < whole.size(); ++length) {
        const Finished end = merge({file("cut", whole.substr(0, length)), other});
        const bool hasFirst = length >= entry(1, "saved").size() - 1;
        EXPECT_EQ(end.status, hasFirst ? 0 : 1) << length << end.err;
        EXPECT_EQ(linesOf(end.out).size(), hasFirst ? 3U : 2U) << length;
    }
    const std::string told = summary(2);
    for (size_t length = 1; length < told.size(); ++length)
        EXPECT_EQ(merge({file("cut", entry(1, "saved") + told.substr(0, length)), other}).status,
                  0);
    // As a machine that lost its power may leave it.
    const std::string zeros = file("zeros", entry(1, "saved") + std::string(300, '\0'));
    EXPECT_EQ(merge({zeros, other}).status, 0);
}

TEST_F(RunnerMerging, NumbersThatNoReportHasAreToldAndCountAsUndone) {
    const std::string a =
        file("a", entry(2, "saved") + entry(3, "saved") + entry(9, "failed") + summary(12, "0/3"));
    const Finished end = merge({a}, {"--quiet"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.err, "tessarine-batch: 9 of 12 pictures are in no report: 1, 4-8, 10-12\n");
    const json all = summaryOf(end);
    EXPECT_EQ(all.at("missing"), 9);
    EXPECT_EQ(all.at("missing_numbers"), json({1, 4, 5, 6, 7, 8, 10, 11, 12}));
    EXPECT_EQ(all.at("interrupted"), true);
    EXPECT_EQ(all.at("unfinished_shards"), json({0, 1, 2}));
}

TEST_F(RunnerMerging, OfVeryManyMissingNumbersTheFirstAreToldAndAllStandInTheSummary) {
    std::string text;
    for (int number = 2; number <= 100; number += 2)
        text += entry(number, "saved");
    const Finished end = merge({file("a", text + summary(100))}, {"--quiet"});
    EXPECT_NE(end.err.find("50 of 100 pictures are in no report: 1, 3, 5, "), std::string::npos);
    EXPECT_NE(end.err.find(", 39 and 30 more\n"), std::string::npos) << end.err;
    EXPECT_EQ(summaryOf(end).at("missing_numbers").size(), 50U);
}

TEST_F(RunnerMerging, ShardsWithSomethingLeftToDoAreNamed) {
    // Of four shards the third was killed, and the second has a picture that failed.
    std::vector<std::string> files;
    for (const int32_t index : {0, 1, 2, 3}) {
        std::string text;
        const std::vector<size_t> places = Shard{index, 4}.placesIn(20);
        for (size_t i = 0; i < (index == 2 ? 2 : places.size()); ++i)
            text +=
                entry(static_cast<int>(places[i] + 1), index == 1 && i == 3 ? "failed" : "saved");
        if (index != 2) text += summary(20, std::to_string(index) + "/4");
        files.push_back(file("r" + std::to_string(index), text));
    }
    const Finished end = merge(files);
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(summaryOf(end).at("shards"), 4);
    EXPECT_EQ(summaryOf(end).at("unfinished_shards"), json({1, 2}));
    // Where the basket was divided in several ways, the last one is gone on with.
    std::set<int32_t> owners;
    const json missing = summaryOf(end).at("missing_numbers");
    for (const json& number : missing)
        owners.insert(Shard::ownerOf(number.get<size_t>() - 1, 3));
    owners.insert(Shard::ownerOf(Shard{1, 4}.placesIn(20)[3], 3));
    files.push_back(file("third", summary(20, "0/3")));
    EXPECT_EQ(summaryOf(merge(files)).at("shards"), 3);
    EXPECT_EQ(summaryOf(merge(files)).at("unfinished_shards"), json(owners));
    files.insert(files.begin(), files.back());
    files.pop_back();
    EXPECT_EQ(summaryOf(merge(files)).at("unfinished_shards"), json({1, 2}));
}

TEST_F(RunnerMerging, WithoutAnySummaryTheEndOfTheBasketIsNotKnown) {
    const Finished end = merge({file("a", entry(1, "saved") + entry(2, "saved"))}, {"--quiet"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(linesOf(end.out).size(), 3U);
    EXPECT_EQ(end.err,
              "tessarine-batch: no report has a summary, so that there may be pictures behind 2\n");
}

TEST_F(RunnerMerging, WhatIsNoReportOrOfAnotherBasketIsRefused) {
    const std::string good = file("good", entry(1, "saved") + entry(2, "saved") + summary(2));
    expectRefusedMerge({scratch / "none"}, {"none", "cannot be read"});
    expectRefusedMerge({scratch.path().string()}, {"cannot be read"});
    expectRefusedMerge({good, file("words", "something else\n")}, {"line 1", "words"});
    expectRefusedMerge({good, file("words", "something else")}, {"line 1", "words"});
    expectRefusedMerge({file("middle", entry(1, "saved") + "{\"number\":\n" + summary(2))},
                       {"line 2", "middle"});
    expectRefusedMerge({file("joined", entry(1, "saved") + "{\"num" + entry(2, "saved"))},
                       {"line 2", "joined"});
    for (const char* wrong :
         {R"({"number":0,"input":"a","output":"b","status":"saved"})",
          R"({"number":3000000000,"input":"a","output":"b","status":"saved"})",
          R"({"number":"1","input":"a","output":"b","status":"saved"})",
          R"({"number":1,"input":"a","output":"b","status":"lost"})",
          R"({"number":1,"output":"b","status":"saved"})", R"([1])", "7", R"({"summary":{"ms":1}})",
          R"({"summary":{"ms":1,"basket":1,"shard":"2/2"}})", R"({"summary":{"ms":1,"basket":-1}})",
          R"({"summary":{"ms":1,"basket":2147483648}})",
          R"({"summary":{"ms":1,"basket":9000000000000000000}})",
          R"({"summary":{"ms":1,"basket":18446744073709551615}})",
          R"({"summary":{"ms":1,"basket":1e300}})"})
        expectRefusedMerge({file("wrong", std::string(wrong) + "\n" + summary(1))},
                           {"line 1", "wrong"});
    expectRefusedMerge({good, file("larger", summary(3))}, {"larger", "basket of 3", "of 2"});
    expectRefusedMerge({good, file("behind", entry(3, "saved"))}, {"picture 3", "basket of 2"});
    expectRefusedMerge({file("behind", entry(3, "saved")), good}, {"picture 3", "basket of 2"});
    std::string moved = entry(1, "saved");
    moved.replace(moved.find("in/1"), 4, "in/7");
    expectRefusedMerge({good, file("moved", moved)}, {"moved", "picture 1", "in/7", "in/1"});
    expectRefusedMerge({file("empty", "")}, {"no pictures"});
}

TEST_F(RunnerMerging, TheReportGoesWhereItIsWantedButNotOverOneOfItsOwn) {
    const std::string a = file("a", entry(1, "saved") + summary(1));
    const std::string to = scratch / "merged";
    const Finished end = merge({a}, {"--report", to});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(readFile(to), merge({a}).out);
    EXPECT_EQ(merge({a}, {"--report", "-"}).out, merge({a}).out);
    fs::create_hard_link(a, scratch / "twin");
    for (const std::string& same : {a, scratch / "./a", scratch / "twin"}) {
        const Finished refused = merge({a}, {"--report", same});
        EXPECT_EQ(refused.status, 3);
        EXPECT_NE(refused.err.find("one of the reports to be merged"), std::string::npos);
    }
    EXPECT_EQ(readFile(a), entry(1, "saved") + summary(1));
    EXPECT_EQ(merge({to, a}, {"--quiet"}).status, 0) << "a merged report is a report";
    const Finished full = merge({a}, {"--report", "/dev/full"});
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.err.find("could not be written whole"), std::string::npos) << full.err;
    EXPECT_EQ(merge({a}, {"--report", scratch / "no/where"}).status, 3);
}

TEST_F(RunnerMerging, NothingElseIsDoneBesideIt) {
    const std::string a = file("a", entry(1, "saved") + summary(1));
    expectRefused(merge({a}, {"--to", out}), 2, {"--to", "--merge-reports"});
    expectRefused(merge({a}, {"--overwrite"}), 2, {"--overwrite", "--merge-reports"});
    expectRefused(merge({a}, {"--shard", "0/2"}), 2, {"--shard", "--merge-reports"});
    expectRefused(run({grey("x.ppm", 1), "--merge-reports", a}), 2, {"PATH", "--merge-reports"});
    expectRefused(run({"--merge-reports"}), 2, {"--merge-reports"});
}

TEST_F(RunnerMerging, AReportOfARealRunMergesWithThatOfTheRunThatWentOn) {
    const std::string a = grey("a.ppm", 1);
    const std::string bad = in + "/bad.ppm";
    writeFile(bad, "no picture");
    EXPECT_EQ(runTo({a, bad, a, "--report", scratch / "one"}).status, 1);
    grey("bad.ppm", 2);
    EXPECT_EQ(runTo({a, bad, a, "--report", scratch / "two"}).status, 0);
    const Finished end = merge({scratch / "one", scratch / "two"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(summaryOf(end).at("saved"), 3);
    EXPECT_FALSE(summaryOf(end).contains("shards"));
}

}  // namespace
}  // namespace tessarine::tests
