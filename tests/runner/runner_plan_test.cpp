#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <map>
#include <sys/stat.h>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "runner_fixture.h"

// Plans: what would be done, written down, and done later.

namespace tessarine::tests {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using Names = std::set<std::string>;

class RunnerPlan : public Runner {
  protected:
    Finished planTo(std::vector<std::string> words) {
        words.insert(words.end(), {"--plan", plan});
        return runTo(std::move(words));
    }
    std::vector<json> planned() const {
        std::vector<json> lines;
        for (const std::string& line : linesOf(readFile(plan)))
            lines.push_back(json::parse(line));
        return lines;
    }
    json summary() const { return planned().back().at("summary"); }
    Finished runPlan(std::vector<std::string> words = {}) {
        words.insert(words.begin(), {"--from-plan", plan});
        return run(std::move(words));
    }
    /// A plan with one line changed; 0 is the first.
    void changePlan(size_t at, const std::function<void(json&)>& change) const {
        std::string text;
        std::vector<json> lines = planned();
        change(lines.at(at));
        for (const json& line : lines)
            text += line.dump() + "\n";
        writeFile(plan, text);
    }
    void expectNotRun(const std::vector<std::string>& words,
                      const std::vector<std::string>& more = {}) {
        const Names before = outputs();
        const Finished end = runPlan(more);
        EXPECT_EQ(end.status, 3) << end.err;
        EXPECT_EQ(linesOf(end.err).size(), 1U) << end.err;
        for (const std::string& word : words)
            EXPECT_THAT(end.err, HasSubstr(word));
        EXPECT_EQ(outputs(), before);
    }

    const std::string plan = scratch / "plan.jsonl";
};

TEST_F(RunnerPlan, TellsEveryPictureAndWritesNothingElse) {
    const std::string a = picture("a.ppm", plain(6, 4, {1, 2, 3, 0}));
    const std::string b = picture("b.ppm", plain(30, 20, {1, 2, 3, 0}));
    writeFile(in + "/bad.jpg", "no picture");
    writeFile(out + "/Sample2.bmp", "mine");
    const std::string none = in + "/none.ppm";
    const Finished end = planTo({"--apply", "Negative", a, b, in + "/bad.jpg", none, "--report",
                                 scratch / "report", "--overwrite"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(outputs(), Names{"Sample2.bmp"});
    EXPECT_EQ(readFile(out + "/Sample2.bmp"), "mine");
    EXPECT_FALSE(fs::exists(scratch / "report"));

    const std::vector<json> lines = planned();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0].at("format"), "bmp");
    EXPECT_EQ(lines[0].at("to"), out + "/");
    EXPECT_EQ(lines[0].at("name"), "Sample");
    EXPECT_EQ(lines[0].at("onExists"), "overwrite");
    EXPECT_EQ(lines[0].at("keepTree"), false);
    EXPECT_EQ(lines[0].at("functions").at("rows").at(0).at("name"), "Negative");
    EXPECT_EQ(lines[1].at("number"), 1);
    EXPECT_EQ(lines[1].at("input"), a);
    EXPECT_EQ(lines[1].at("output"), out + "/Sample1.bmp");
    EXPECT_EQ(lines[1].at("action"), "make");
    EXPECT_EQ(lines[1].at("width"), 6);
    EXPECT_EQ(lines[1].at("height"), 4);
    EXPECT_EQ(lines[2].at("action"), "replace");
    EXPECT_EQ(lines[2].at("pixels"), 600);
    EXPECT_EQ(lines[3].at("error"), "unreadable");
    EXPECT_NE(lines[3].at("message"), "");
    EXPECT_EQ(lines[4].at("error"), "unreadable");
    EXPECT_THAT(lines[4].at("files"), ElementsAre(json()));
    EXPECT_EQ(summary(), json::parse(R"({"pictures":4,"make":3,"replace":1,"keep":0,"fail":0,
                                         "unreadable":2,"conflicts":0,"pixels":624})"));
    // What cannot be read is named for people as well.
    EXPECT_THAT(end.err, HasSubstr(in + "/bad.jpg: unreadable"));
    EXPECT_THAT(end.err, HasSubstr(none + ": unreadable: No such file"));
    EXPECT_THAT(end.err, HasSubstr("3 to make, 1 to replace, 0 to keep, 0 to fail of 4 pictures"));
}

TEST_F(RunnerPlan, TellsWhatIsKeptAndWhatFails) {
    const std::string a = grey("a.ppm", 10);
    writeFile(out + "/Sample1.bmp", "mine");
    const auto actionWith = [&](const std::vector<std::string>& words) {
        EXPECT_EQ(planTo(words).status, 0);
        return planned().at(1).at("action");
    };
    EXPECT_EQ(actionWith({a}), "keep");
    EXPECT_EQ(actionWith({a, "--on-exists", "fail"}), "fail");
    EXPECT_EQ(actionWith({a, "--overwrite"}), "replace");
    fs::remove(out + "/Sample1.bmp");
    const std::string journal = scratch / "journal";
    ASSERT_EQ(runTo({a, "--resume", journal}).status, 0);
    EXPECT_EQ(actionWith({a, "--overwrite", "--resume", journal}), "keep");
    EXPECT_EQ(planned().at(1).at("upToDate"), true);
    EXPECT_EQ(actionWith({a, "--apply", "Negative", "--resume", journal}), "replace");
}

TEST_F(RunnerPlan, TellsThatAFolderInAnOutputsPlaceFailsAsItDoes) {
    const std::string a = grey("a.ppm", 10);
    const std::string b = grey("b.ppm", 20);
    fs::create_directory(out + "/Sample1.bmp");
    fs::create_directory(scratch / "elsewhere");
    fs::create_directory_symlink(scratch / "elsewhere", out + "/Sample2.bmp");
    for (const char* wish : {"keep", "overwrite", "fail"}) {
        const std::vector<std::string> words{"--on-exists", wish, a, b};
        EXPECT_EQ(planTo(words).status, 0);
        EXPECT_EQ(planned().at(1).at("action"), "fail") << wish;
        EXPECT_EQ(planned().at(2).at("action"), "fail") << wish;
        EXPECT_EQ(summary().at("fail"), 2);
        EXPECT_THAT(runPlan().err, HasSubstr("0 saved, 0 kept, 2 failed of 2 pictures"));
        std::vector<std::string> dry = words;
        dry.push_back("--dry-run");
        const std::vector<std::string> lines = linesOf(runTo(dry).out);
        EXPECT_EQ(lines.size(), 2U);
        for (const std::string& line : lines)
            EXPECT_THAT(line, testing::EndsWith(" (exists, fails)")) << wish;
    }
}

TEST_F(RunnerPlan, LooksAtManyPicturesAtOnceWhereFewFilesMayBeOpen) {
    const std::vector<std::string> words{"--to", out, "--format", "bmp", "--jobs",
                                         "16",   in,  "--plan",   plan};
    for (int i = 0; i < 40; ++i)
        picture("p" + std::to_string(100 + i) + ".ppm", randomBuffer(40, 30, 1));
    const Finished end = runThroughShell("ulimit -Sn 24; exec \"$@\"", words);
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(summary().at("pictures"), 40);
    EXPECT_EQ(summary().at("unreadable"), 0) << end.err;
}

TEST_F(RunnerPlan, GoesToStandardOutputWhereAsked) {
    const std::string a = grey("a.ppm", 10);
    const Finished end = runTo({"--quiet", "--plan", "-", a});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.err, "");
    const std::vector<std::string> lines = linesOf(end.out);
    ASSERT_EQ(lines.size(), 3U);
    writeFile(plan, end.out);
    EXPECT_EQ(runPlan().status, 0);
    EXPECT_EQ(levelOf("Sample1.bmp"), 10);
    EXPECT_EQ(runTo({"--plan", "/dev/full", a}).status, 1);
}

TEST_F(RunnerPlan, IsRunAsItStands) {
    grey("north/a.ppm", 10);
    grey("b.ppm", 20);
    picture("n.ppm", randomBuffer(30, 20, 4));
    const std::string odd = grey("\xE9.ppm", 40);
    const std::vector<std::string> words{"--apply",     "Noise:Intensity=40",
                                         "--apply",     "Swap RGB",
                                         "--invert",    "g",
                                         "--apply",     "Rotate Intelligently",
                                         "--degrees",   "20",
                                         "--keep-tree", "--keep-names",
                                         "--recursive", in};
    ASSERT_EQ(runTo(words).status, 0);
    std::map<std::string, std::string> expected;
    for (const auto& entry : fs::recursive_directory_iterator(out))
        if (entry.is_regular_file()) expected[entry.path()] = readFile(entry.path());
    ASSERT_EQ(expected.size(), 4U);
    for (const char* shares : {"1", "3"}) {
        fs::remove_all(out);
        fs::create_directory(out);
        ASSERT_EQ(planTo(words).status, 0);
        EXPECT_TRUE(outputs().empty()) << "not even a folder";
        for (int share = 0; share < std::stoi(shares); ++share) {
            const Finished end =
                runPlan({"--shard", std::to_string(share) + "/" + shares, "--jobs", "2"});
            EXPECT_EQ(end.status, 0) << end.err;
        }
        for (const auto& [name, bytes] : expected)
            EXPECT_TRUE(readFile(name) == bytes) << name;
    }
}

TEST_F(RunnerPlan, KeepsToItsWordOnOutputsThatExist) {
    const std::string a = grey("a.ppm", 10);
    for (const char* wish : {"keep", "overwrite", "fail"}) {
        ASSERT_EQ(planTo({"--on-exists", wish, a}).status, 0);
        writeFile(out + "/Sample1.bmp", "mine");
        EXPECT_EQ(runPlan().status, wish == std::string("fail") ? 1 : 0) << wish;
        EXPECT_EQ(readFile(out + "/Sample1.bmp") == "mine", wish != std::string("overwrite"));
    }
}

TEST_F(RunnerPlan, WorksTogetherWithAJournal) {
    grey("a.ppm", 10);
    grey("b.ppm", 20);
    const std::string journal = scratch / "journal";
    ASSERT_EQ(planTo({"--apply", "Negative", in}).status, 0);
    EXPECT_THAT(runPlan({"--resume", journal}).err, HasSubstr("2 saved"));
    EXPECT_THAT(runPlan({"--resume", journal}).err, HasSubstr("0 saved, 2 kept"));
    // The same run in words is the same run.
    EXPECT_THAT(runTo({"--apply", "Negative", "--resume", journal, in}).err,
                HasSubstr("0 saved, 2 kept"));
}

TEST_F(RunnerPlan, WithCollisionsIsToldAndNotRun) {
    const std::string a = grey("x/a.ppm", 10);
    const std::string b = grey("y/a.ppm", 20);
    const std::string c = grey("z/c.ppm", 20);
    const Finished end = planTo({"--keep-names", a, b, c, c});
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("'" + a + "' and '" + b + "' would both be saved as"));
    EXPECT_THAT(end.err, HasSubstr("'" + c + "' and '" + c + "' would both be saved as"));
    const std::vector<json> lines = planned();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_FALSE(lines[1].contains("conflict"));
    EXPECT_THAT(lines[2].at("conflict").get<std::string>(), HasSubstr(out + "/a.bmp"));
    EXPECT_FALSE(lines[3].contains("conflict"));
    EXPECT_THAT(lines[4].at("conflict").get<std::string>(), HasSubstr(out + "/c.bmp"));
    EXPECT_EQ(summary().at("conflicts"), 2);
    expectNotRun({plan, "conflicts"});
    // Nor where somebody takes the count away.
    changePlan(5, [](json& line) { line["summary"]["conflicts"] = 0; });
    expectNotRun({"both be saved as"});
}

TEST_F(RunnerPlan, TellsOfPicturesThatTheRunWouldReplace) {
    const std::string a = grey("a.ppm", 10);
    const Finished end =
        run({"--to", in, "--format", "ppm", "--keep-names", "--overwrite", a, "--plan", plan});
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(planned().at(1).at("conflict").get<std::string>(),
                HasSubstr("is a picture of this run"));
    expectNotRun({"conflicts"});
}

TEST_F(RunnerPlan, IsNotRunWhereAPictureIsNotAsItWas) {
    const std::string a = grey("a.ppm", 10);
    const std::string b = grey("b.ppm", 20);
    const std::string none = in + "/none.ppm";
    const auto planAnew = [&] { ASSERT_EQ(planTo({a, b, none}).status, 0); };
    planAnew();
    const timespec times[2] = {{1700000000, 5}, {1700000000, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, a.c_str(), times, 0), 0);
    expectNotRun({"'" + a + "' has changed since the plan was made"});
    // Shares without it are run.
    int refused = 0;
    for (const char* share : {"0/3", "1/3", "2/3"})
        refused += runPlan({"--shard", share}).status == 3 ? 1 : 0;
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(outputs(), Names{"Sample2.bmp"});
    planAnew();
    writeFile(a, readFile(a) + "x");
    expectNotRun({"'" + a + "' has changed"});
    planAnew();
    fs::remove(b);
    expectNotRun({"'" + b + "' has vanished"});
    grey("b.ppm", 20);
    planAnew();
    grey("none.ppm", 30);
    expectNotRun({"'" + none + "' has changed"});
    fs::remove(none);
    // What was missing then and is now fails as ever.
    planAnew();
    EXPECT_EQ(runPlan().status, 1);
    EXPECT_EQ(outputs(), (Names{"Sample1.bmp", "Sample2.bmp"}));
}

TEST_F(RunnerPlan, IsNotRunWhereItIsNoneOrNotWhole) {
    const std::string a = grey("a.ppm", 10);
    const std::string b = grey("b.ppm", 20);
    ASSERT_EQ(planTo({"--apply", "Contrast:Level=20", a, b}).status, 0);
    const std::string whole = readFile(plan);
    // Cut anywhere, but behind its last line alone.
    for (size_t length = 0; length + 1 < whole.size(); length += 7) {
        writeFile(plan, whole.substr(0, length));
        expectNotRun({"--from-plan", plan});
    }
    const auto expectRefusedWith = [&](size_t at, const std::function<void(json&)>& change,
                                       const std::string& why) {
        writeFile(plan, whole);
        changePlan(at, change);
        expectNotRun({"--from-plan", why});
    };
    expectRefusedWith(
        0, [](json& j) { j["version"] = "9.9.9"; }, "another version");
    expectRefusedWith(
        0, [](json& j) { j["tessarine-plan"] = 2; }, "another version");
    expectRefusedWith(
        0, [](json& j) { j.erase("tessarine-plan"); }, "settings of a plan");
    expectRefusedWith(
        0, [](json& j) { j["format"] = "webp"; }, "output format");
    expectRefusedWith(
        0, [](json& j) { j["onExists"] = "ask"; }, "keep, overwrite or fail");
    expectRefusedWith(
        0, [](json& j) { j["functions"]["rows"][0]["id"] = 71; }, "0 to 70");
    expectRefusedWith(
        0, [](json& j) { j["functions"]["rows"][0].erase("columns"); }, "line 1");
    expectRefusedWith(
        0, [](json& j) { j["functions"]["degrees"] = 181; }, "-180 to 180");
    expectRefusedWith(
        1, [](json& j) { j["number"] = 2; }, "line 2");
    expectRefusedWith(
        1, [](json& j) { j.erase("files"); }, "line 2");
    expectRefusedWith(
        2, [](json& j) { j["input"] = 5; }, "line 3");
    expectRefusedWith(
        3, [](json& j) { j["summary"]["pictures"] = 3; }, "missing");
    writeFile(plan, whole + whole);
    expectNotRun({"goes on behind its summary"});
    writeFile(plan, readFile(a));
    expectNotRun({"line 1 is none of a plan"});
    fs::remove(plan);
    expectNotRun({plan, "No such file"});
    fs::create_directory(plan);
    expectNotRun({plan, "a folder"});
}

TEST_F(RunnerPlan, LeadsNowhereOutOfItsDestination) {
    const std::string a = grey("a.ppm", 10);
    const std::string mine = scratch / "mine.bmp";
    for (const std::string& output :
         {mine, out + "/../mine.bmp", out + "/x/../../mine.bmp", out + "//mine.bmp", out + "/"}) {
        ASSERT_EQ(planTo({a}).status, 0);
        changePlan(1, [&](json& j) { j["output"] = output; });
        expectNotRun({"destination"});
        EXPECT_FALSE(fs::exists(mine));
    }
    ASSERT_EQ(planTo({a}).status, 0);
    fs::remove_all(out);
    const Finished end = runPlan();
    EXPECT_EQ(end.status, 3);
    EXPECT_THAT(end.err, HasSubstr("there is no folder '" + out));
}

TEST_F(RunnerPlan, TakesNoOtherWordOnWhatIsDone) {
    const std::string a = grey("a.ppm", 10);
    ASSERT_EQ(planTo({a}).status, 0);
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{a},
                                               {"--recursive"},
                                               {"--from", a},
                                               {"--pictures", a},
                                               {"--apply", "Negative"},
                                               {"--functions", a},
                                               {"--degrees", "5"},
                                               {"--to", out},
                                               {"--name", "x"},
                                               {"--format", "bmp"},
                                               {"--overwrite"},
                                               {"--on-exists", "keep"},
                                               {"--keep-tree"},
                                               {"--keep-names"},
                                               {"--mode", "independent"},
                                               {"--plan", scratch / "other"}}) {
        const Finished end = runPlan(words);
        EXPECT_EQ(end.status, 2) << words[0];
        EXPECT_THAT(end.err, HasSubstr("does not go with --from-plan")) << words[0];
    }
    expectRefused(runTo({"--plan", plan, "--shard", "0/2", a}), 2, {"--plan", "--shard"});
    expectRefused(runTo({"--plan", plan, "--mode", "window", a}), 2, {"--plan", "independent"});
    expectRefused(runTo({"--plan", "", a}), 2, {"--plan", "empty"});
    expectRefused(run({"--from-plan", ""}), 2, {"--from-plan", "empty"});
}

TEST_F(RunnerPlan, IsNotWrittenOverWhatTheRunNeeds) {
    const std::string a = grey("a.ppm", 10);
    const std::string before = readFile(a);
    expectRefused(runTo({"--plan", a, a}), 3, {"--plan", "a picture"});
    EXPECT_EQ(readFile(a), before);
    expectRefused(runTo({"--plan", out + "/Sample1.bmp", a}), 3, {"--plan", "an output"});
    expectRefused(runTo({"--plan", scratch / "no/where", a}), 3, {"--plan", "No such file"});
    ASSERT_EQ(planTo({a}).status, 0);
    const std::string planBytes = readFile(plan);
    expectNotRun({"--report", "the plan"}, {"--report", plan});
    EXPECT_EQ(readFile(plan), planBytes);
}

}  // namespace
}  // namespace tessarine::tests
