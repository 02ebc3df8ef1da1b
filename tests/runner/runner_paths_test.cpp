#include <filesystem>
#include <sys/stat.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "batch/list_files.h"
#include "runner_fixture.h"

// Names as file systems allow them.

namespace tessarine::tests {
namespace {

using nlohmann::json;

class RunnerPaths : public Runner {
  protected:
    /// The program inside the folder of pictures, so that a name stands alone on the line.
    Finished runInside(std::vector<std::string> names) {
        names.insert(names.begin(), {"--to", out, "--format", "bmp"});
        return runThroughShell("cd '" + in + "' && exec \"$@\"", std::move(names));
    }
    void pipeAt(const std::string& name) {
        ASSERT_EQ(::mkfifo((in + "/" + name).c_str(), 0600), 0);
    }
};

TEST_F(RunnerPaths, OddNamesArePicturesLikeOthers) {
    const std::vector<std::string> names{
        "[x].ppm",      "[a,b].ppm",      "[a,b]",        "{}.ppm",       "%%.ppm",
        " blank.ppm",   "two  words.ppm", "a,b.ppm",      "a=b.ppm",      "quote'\".ppm",
        "\x01mark.ppm", "back\\.ppm",     "\xE9\xFF.ppm", "line\nend.ppm"};
    std::vector<std::string> words;
    int level = 10;
    for (const std::string& name : names) {
        grey(name, static_cast<uint8_t>(level++));
        words.push_back(name);
    }
    const Finished end = runInside(words);
    // A name without an extension has no format, whatever it holds.
    EXPECT_EQ(end.status, 1);
    ASSERT_EQ(linesOf(end.err).size(), 2U) << end.err;
    EXPECT_NE(end.err.find("[a,b]: unreadable"), std::string::npos) << end.err;
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i] == "[a,b]") continue;
        EXPECT_EQ(levelOf("Sample" + std::to_string(i + 1) + ".bmp"), 10 + static_cast<int>(i))
            << names[i];
    }
}

TEST_F(RunnerPaths, WordsThatTheLibraryTakesForListsStayWords) {
    // None of them is a picture; each is told by its name, and the last one is read.
    const std::vector<std::string> names{"[]", "[a]", "[a,b]", "{}", "%%", "[", "]"};
    for (const std::string& name : names) {
        grey("last.ppm", 30);
        const Finished end = runInside({name, "last.ppm", "--overwrite"});
        EXPECT_EQ(end.status, 1) << name;
        ASSERT_EQ(linesOf(end.err).size(), 2U) << end.err;
        EXPECT_NE(end.err.find(": " + name + ": unreadable"), std::string::npos) << end.err;
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample2.bmp"})) << name;
        const Finished alone = runInside({name});
        EXPECT_EQ(alone.status, 1) << name;
        EXPECT_NE(alone.err.find(": " + name + ": unreadable"), std::string::npos) << alone.err;
    }
}

TEST_F(RunnerPaths, OptionsTakeNamesInBracketsWhole) {
    const std::string a = grey("a.ppm", 10);
    writePictureList(in + "/[a,b]", std::vector<std::string>{a});
    fs::create_directory(in + "/[to]");
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"--pictures", "[a,b]", "--to", "[to]", "--name", "[n]", "--report", "[r]"},
             {"--pictures=[a,b]", "--to=[to]", "--name=[n]", "--report=[r]"}}) {
        std::vector<std::string> all{"--format", "bmp"};
        all.insert(all.end(), words.begin(), words.end());
        const Finished end = runThroughShell("cd '" + in + "' && exec \"$@\"", all);
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_TRUE(fs::remove(in + "/[to]/[n]1.bmp"));
        EXPECT_TRUE(fs::remove(in + "/[r]"));
    }
}

TEST_F(RunnerPaths, BehindTwoDashesEveryWordIsAPath) {
    grey("-a.ppm", 10);
    grey("--quiet", 20);
    grey("--x=[y].ppm", 30);
    const Finished end = runInside({"--", "-a.ppm", "--x=[y].ppm", "--quiet"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(levelOf("Sample1.bmp"), 10);
    EXPECT_EQ(levelOf("Sample2.bmp"), 30);
    EXPECT_NE(end.err.find(": --quiet: unreadable"), std::string::npos) << end.err;
}

TEST_F(RunnerPaths, ANameOfSeveralLinesIsToldOnOne) {
    const std::string odd = in + "/two\nlines\r\x1b[31m.ppm";
    const Finished failed = runTo({"--quiet", odd});
    EXPECT_EQ(failed.status, 1);
    ASSERT_EQ(linesOf(failed.err).size(), 1U) << failed.err;
    EXPECT_NE(failed.err.find("two\\x0alines\\x0d\\x1b[31m.ppm"), std::string::npos) << failed.err;
    const Finished plan = runTo({"--dry-run", odd});
    ASSERT_EQ(linesOf(plan.out).size(), 1U);
    EXPECT_NE(plan.out.find("two\\x0alines"), std::string::npos);
    expectRefused(runTo({"--functions", odd, odd}), 3, {"two\\x0alines"});
}

TEST_F(RunnerPaths, BytesThatAreNoTextReachTheFileAndAreReplacedInTheReport) {
    const std::string odd = grey("\xE9t\xE9.ppm", 44);
    const Finished end = runTo({"--name", "\xFF", "--report", "-", odd});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(levelOf("\xFF"
                      "1.bmp"),
              44);
    const json entry = json::parse(linesOf(end.out).at(0));
    EXPECT_EQ(entry.at("input"), in + "/\uFFFDt\uFFFD.ppm");
    EXPECT_EQ(entry.at("output"), out + "/\uFFFD1.bmp");
}

TEST_F(RunnerPaths, LinksToPicturesAreFollowedAndLinksToFoldersOnlyWhereNamed) {
    const std::string a = grey("real/a.ppm", 10);
    fs::create_directory(in + "/links");
    fs::create_symlink(a, in + "/links/one.ppm");
    fs::create_symlink(in + "/gone.ppm", in + "/links/two.ppm");
    fs::create_symlink(in + "/links", in + "/links/self");
    const Finished folder = runTo({"--recursive", in + "/links"});
    EXPECT_EQ(folder.status, 0) << folder.err;
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp"}));
    EXPECT_EQ(levelOf("Sample1.bmp"), 10);

    fs::create_directory_symlink(in + "/real", in + "/door");
    const Finished named =
        runTo({"--name", "Named", in + "/links/one.ppm", in + "/door", in + "/links/two.ppm"});
    EXPECT_EQ(named.status, 1) << "the last one leads nowhere";
    EXPECT_EQ(levelOf("Named1.bmp"), 10);
    EXPECT_EQ(levelOf("Named2.bmp"), 10);
    EXPECT_FALSE(outputs().count("Named3.bmp"));
}

TEST_F(RunnerPaths, APipeIsNeverWaitedFor) {
    const std::string a = grey("a.ppm", 10);
    pipeAt("pipe.ppm");
    for (const char* mode : {"independent", "window"}) {
        const Finished end = runWithinAMinute({"--mode", mode, "--overwrite", a, in + "/pipe.ppm"});
        EXPECT_EQ(end.status, 1) << end.err;
        EXPECT_NE(end.err.find("pipe.ppm: unreadable: it is no regular file"), std::string::npos)
            << end.err;
    }
    const Finished folder = runWithinAMinute({"--overwrite", "--report", "-", in});
    EXPECT_EQ(folder.status, 0) << folder.err;
    EXPECT_EQ(linesOf(folder.out).size(), 2U) << "one picture and the summary";
    for (const char* option : {"--pictures", "--functions"}) {
        const Finished list = runWithinAMinute({option, in + "/pipe.ppm", a});
        EXPECT_EQ(list.status, 3) << list.err;
        EXPECT_NE(list.err.find("no regular file"), std::string::npos) << list.err;
    }
}

TEST_F(RunnerPaths, DraftsOfOtherRunsAreNoPicturesOfAFolder) {
    grey("a.ppm", 10);
    grey(".hidden.ppm", 20);
    grey(".tessarine-0123456789abcdef.ppm", 30);
    const Finished end = runTo({"--report", "-", in});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp"}));
    EXPECT_EQ(end.out.find(".tessarine-"), std::string::npos);
}

/// Runs in which a picture may stand under an output's name.
class RunnerSources : public RunnerPaths {
  protected:
    /// Refused with --overwrite before anything is written; without it the output is kept. Either
    /// way the picture keeps its bytes.
    void expectProtected(const std::string& input, const std::string& file) {
        const std::string before = readFile(file);
        ASSERT_FALSE(before.empty());
        const std::set<std::string> names = outputs();
        const Finished refused = runTo({"--overwrite", input, a});
        EXPECT_EQ(refused.status, 3) << refused.err;
        EXPECT_NE(refused.err.find("'" + input + "' is a picture of this run"), std::string::npos)
            << refused.err;
        EXPECT_EQ(outputs(), names);
        EXPECT_EQ(readFile(file), before);
        const Finished kept = runTo({"--report", "-", input, a});
        EXPECT_NE(kept.out.find("\"kept\""), std::string::npos) << kept.out << kept.err;
        EXPECT_EQ(readFile(file), before);
    }
    /// Refused because the run itself would make the picture.
    void expectNoSuchPictureYet(const std::vector<std::string>& words, const std::string& input) {
        const Finished end = runTo(words);
        EXPECT_EQ(end.status, 3) << end.err;
        EXPECT_NE(end.err.find("'" + input + "' is a picture of this run, is not there"),
                  std::string::npos)
            << end.err;
        EXPECT_FALSE(fs::exists(out + "/Sample1.bmp"));
    }
    /// A picture in the destination.
    std::string makeOutput(const std::string& name) {
        EXPECT_EQ(runTo({"--name", "made", a}).status, 0);
        fs::rename(out + "/made1.bmp", out + "/" + name);
        return out + "/" + name;
    }

    const std::string a = grey("a.ppm", 10);
};

TEST_F(RunnerSources, UnderAnOutputsNameAreNeverReplaced) {
    const std::string first = makeOutput("Sample1.bmp");
    expectProtected(first, first);
    const std::string second = makeOutput("Sample2.bmp");
    fs::remove(first);
    expectProtected(second, second);
}

TEST_F(RunnerSources, ThatAreLinksToAnOutputAreNeverReplaced) {
    const std::string output = makeOutput("Sample2.bmp");
    fs::create_symlink(output, in + "/link.bmp");
    expectProtected(in + "/link.bmp", output);
    fs::remove(out + "/Sample1.bmp");
    fs::create_hard_link(output, in + "/twin.bmp");
    expectProtected(in + "/twin.bmp", output);
}

TEST_F(RunnerSources, ThatAnOutputIsALinkToAreNeverReplaced) {
    const std::string source = in + "/source.bmp";
    fs::rename(makeOutput("Sample9.bmp"), source);
    fs::create_symlink(source, out + "/Sample2.bmp");
    expectProtected(source, source);
    EXPECT_TRUE(fs::is_symlink(out + "/Sample2.bmp"));
}

TEST_F(RunnerSources, ThatAreReachedThroughALinkedFolderAreNeverReplaced) {
    const std::string output = makeOutput("Sample2.bmp");
    fs::create_directory_symlink(out, in + "/door");
    expectProtected(in + "/door/Sample2.bmp", output);
    fs::remove(out + "/Sample1.bmp");
    expectProtected(in + "/../out/./Sample2.bmp", output);
}

TEST_F(RunnerSources, ThatTheRunItselfWouldMakeAreRefused) {
    const std::string later = out + "/Sample1.bmp";
    expectNoSuchPictureYet({a, later}, later);
    expectNoSuchPictureYet({"--overwrite", a, later}, later);
    fs::create_directory_symlink(out, in + "/door");
    expectNoSuchPictureYet({a, in + "/door/Sample1.bmp"}, in + "/door/Sample1.bmp");
    fs::create_symlink("door/Sample1.bmp", in + "/link.bmp");
    expectNoSuchPictureYet({a, in + "/link.bmp"}, in + "/link.bmp");
    expectNoSuchPictureYet({"--overwrite", later}, later);
}

TEST_F(RunnerSources, ThatAreMissingFailAloneWhereTheRunDoesNotMakeThem) {
    // Its own output comes too late to be read, and a name elsewhere is no output's.
    const std::string own = out + "/Sample1.bmp";
    const Finished end = runTo({"--report", "-", own, in + "/Sample2.bmp", a});
    EXPECT_EQ(end.status, 1) << end.err;
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample3.bmp"}));
    for (const size_t i : {0U, 1U})
        EXPECT_EQ(json::parse(linesOf(end.out).at(i)).at("error"), "unreadable");
}

}  // namespace
}  // namespace tessarine::tests
