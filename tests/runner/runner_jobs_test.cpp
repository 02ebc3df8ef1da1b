#include <csignal>
#include <filesystem>
#include <map>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "runner_fixture.h"
#include "support/children.h"

// The program with several pictures in flight.

namespace tessarine::tests {
namespace {

using nlohmann::json;

class RunnerJobs : public Runner {
  protected:
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const std::string& name : outputs())
            all[name] = readFile(out + "/" + name);
        return all;
    }
    void empty() const {
        fs::remove_all(out);
        fs::create_directory(out);
    }
    /// The report without its times.
    std::vector<json> report() const {
        std::vector<json> lines;
        for (const std::string& line : linesOf(readFile(scratch / "report"))) {
            json entry = json::parse(line);
            (entry.contains("summary") ? entry["summary"] : entry).erase("ms");
            lines.push_back(std::move(entry));
        }
        return lines;
    }
};

TEST_F(RunnerJobs, OutputsReportComplaintsAndStatusAreTheSameForAnyNumber) {
    std::vector<std::string> words;
    for (int i = 0; i < 7; ++i)
        words.push_back(
            picture("p" + std::to_string(i) + ".ppm", randomBuffer(90 + 50 * i, 60, i)));
    writeFile(in + "/bad.png", "no picture");
    words.insert(words.begin() + 2, {in + "/bad.png", words[0], in + "/none.gif", words[0]});
    for (const char* word : {"--to", out.c_str(), "--format", "png", "--apply",
                             "Noise:Intensity=40", "--apply", "Diffuse", "--quiet", "--report"})
        words.emplace_back(word);
    words.push_back(scratch / "report");
    std::map<std::string, std::string> expectedFiles;
    std::vector<json> expectedReport;
    std::string expectedComplaints;
    for (const char* jobs : {"1", "2", "5"}) {
        empty();
        std::vector<std::string> all = words;
        all.insert(all.end(), {"--jobs", jobs});
        const Finished end = run(all);
        EXPECT_EQ(end.status, 1) << end.err;
        if (expectedFiles.empty()) {
            expectedFiles = files();
            expectedReport = report();
            expectedComplaints = end.err;
            EXPECT_EQ(expectedFiles.size(), 9U);
            ASSERT_EQ(expectedReport.size(), 12U);
            for (size_t i = 0; i < 11; ++i)
                EXPECT_EQ(expectedReport[i].at("number"), i + 1);
        }
        EXPECT_TRUE(files() == expectedFiles) << jobs;
        EXPECT_EQ(report(), expectedReport) << jobs;
        EXPECT_EQ(end.err, expectedComplaints) << jobs;
    }
}

TEST_F(RunnerJobs, AnInterruptFinishesWhatIsUnderWayAndLeavesNothingElse) {
    const std::string large = picture("large.ppm", randomBuffer(900, 700, 3));
    std::vector<std::string> words{TESSARINE_BATCH, "--to", out,        "--format",        "png",
                                   "--jobs",        "4",    "--report", scratch / "report"};
    words.insert(words.end(), 200, large);
    const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
    const bool begun = waitForAnOutput(running);
    running.kill(SIGINT);
    EXPECT_EQ(running.wait(), 130);
    ASSERT_TRUE(begun) << readFile(scratch / "stderr");
    const std::vector<json> lines = report();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_LT(lines.size(), 200U);
    std::set<std::string> expected;
    for (size_t i = 0; i + 1 < lines.size(); ++i) {
        EXPECT_EQ(lines[i].at("number"), i + 1);
        EXPECT_EQ(lines[i].at("status"), "saved");
        expected.insert("Sample" + std::to_string(i + 1) + ".png");
    }
    EXPECT_EQ(outputs(), expected);
    EXPECT_TRUE(lines.back().at("summary").at("interrupted"));
    for (const auto& [name, bytes] : files())
        EXPECT_TRUE(bytes == files().begin()->second) << name;
}

TEST_F(RunnerJobs, MoreJobsThanPicturesStartNoMoreHelpersThanThereArePictures) {
    std::vector<std::string> words{TESSARINE_BATCH, "--to", out, "--jobs", "16", "--format", "png"};
    for (int i = 0; i < 300; ++i)
        words.insert(words.end(), {"--apply", "Contrast:Level=2"});
    for (const char* name : {"a.ppm", "b.ppm", "c.ppm"})
        words.push_back(picture(name, randomBuffer(500, 400, 3)));
    const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
    size_t most = 0;
    while (!running.hasEnded()) {
        most = std::max(most, children(running.process()).size());
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_EQ(running.wait(), 0) << readFile(scratch / "stderr");
    EXPECT_GT(most, 1U);
    EXPECT_LE(most, 3U);
}

}  // namespace
}  // namespace tessarine::tests
