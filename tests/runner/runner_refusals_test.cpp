#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "batch/functions.h"
#include "batch/list_files.h"
#include "runner_fixture.h"

// What does not start, and says why in one line.

namespace tessarine::tests {
namespace {

TEST_F(Runner, AWrongCommandLineIsRefusedWithStatus2) {
    const std::string a = grey("a.ppm", 10);
    expectRefused(runTo({"--apply", "Blurr", a}), 2, {"Blurr", "--list-functions"});
    expectRefused(runTo({"--apply", "Threshold", a}), 2, {"Threshold"});
    expectRefused(runTo({"--apply", "Contrast:Level=251", a}), 2, {"251", "Level", "-100 to 250"});
    expectRefused(runTo({"--apply", "Contrast:Level=4x", a}), 2, {"4x", "-100 to 250"});
    expectRefused(runTo({"--apply", "Contrast:Depth=4", a}), 2, {"Depth", "Level"});
    expectRefused(runTo({"--apply", "Contrast:Level", a}), 2, {"Level", "KEY=VALUE"});
    expectRefused(runTo({"--apply", "Isolate:Color0=12345", a}), 2, {"12345", "RRGGBB"});
    expectRefused(runTo({"--apply", "Lens:X=200", a}), 2, {"200", "0 to 199"});
    expectRefused(runTo({"--apply", "Sketch:B/W=perhaps", a}), 2, {"perhaps", "on or off"});
    expectRefused(runTo({"--apply", "Glass:Vertical=Tight,Squary=Light", a}), 2, {"Glass", "one"});
    expectRefused(runTo({"--apply", "Curtain:Vertical=on,Classy=on", a}), 2, {"Curtain", "one"});
    expectRefused(runTo({"--degrees", "181", a}), 2, {"181"});
    expectRefused(runTo({"--invert", "rx", a}), 2, {"rx", "rgb"});
    expectRefused(run({"--to", out, "--format", "webp", a}), 2, {"webp", "--list-formats"});
    expectRefused(run({"--to", out, "--format", "18", a}), 2, {"18"});
    expectRefused(runTo({"--mode", "both", a}), 2, {"both"});
    expectRefused(runTo({"--jobs", "0", a}), 2, {"--jobs"});
    expectRefused(runTo({"--frobnicate", a}), 2, {"--frobnicate"});
    expectRefused(run({a}), 2, {"--to"});
}

TEST_F(Runner, ARunThatCannotStartIsRefusedWithStatus3) {
    const std::string a = grey("a.ppm", 10);
    expectRefused(runTo({}), 3, {"no pictures"});
    fs::create_directory(in + "/empty");
    expectRefused(runTo({in + "/empty"}), 3, {"no pictures"});
    expectRefused(run({"--to", scratch / "nowhere", a}), 3, {"nowhere"});
    expectRefused(run({"--to", a, a}), 3, {"a.ppm"});
    expectRefused(runTo({"--functions", scratch / "none.qfk", a}), 3, {"none.qfk"});
    expectRefused(runTo({"--functions", a, a}), 3, {"a.ppm", "function list"});
    expectRefused(runTo({"--pictures", scratch / "none.qpkl"}), 3, {"none.qpkl"});
    expectRefused(runTo({"--pictures", a}), 3, {"a.ppm", "picture list"});
    expectRefused(runTo({"--from", scratch / "none.txt"}), 3, {"none.txt"});
    expectRefused(runTo({"--report", scratch / "no/where.json", a}), 3, {"where.json"});
}

TEST_F(Runner, AFunctionListWithAnUnknownFunctionIsRefused) {
    const std::string a = grey("a.ppm", 10);
    FunctionRecord record;
    record.name = "Something";
    record.id = "71";
    writeFunctionList(in + "/list.qfk", std::vector<FunctionRecord>{record});
    expectRefused(runTo({"--functions", in + "/list.qfk", a}), 3,
                  {"list.qfk", "record 1", "0 to 70"});
}

TEST_F(Runner, AnOutputNeverReplacesAnotherPictureOfTheRun) {
    const std::string first = in + "/Sample2.bmp";
    EXPECT_EQ(run({"--to", in, "--format", "bmp", "--name", "Sample", grey("a.ppm", 10),
                   grey("b.ppm", 20)})
                  .status,
              0);
    const std::string before = readFile(first);
    const Finished end =
        run({"--to", in, "--format", "bmp", "--overwrite", first, in + "/Sample1.bmp"});
    EXPECT_EQ(end.status, 3);
    EXPECT_NE(end.err.find("Sample2.bmp"), std::string::npos);
    EXPECT_EQ(readFile(first), before);
}

TEST_F(Runner, AnEmptyPathIsRefused) {
    const std::string a = grey("a.ppm", 10);
    expectRefused(runTo({a, ""}), 2, {"PATH", "empty"});
    expectRefused(runTo({"--pictures", ""}), 2, {"--pictures", "empty"});
    expectRefused(runTo({a, "--apply", ""}), 2, {"--apply", "empty"});
}

TEST_F(Runner, AGenericNameThatIsNoFileNameIsRefused) {
    const std::string a = grey("a.ppm", 10);
    expectRefused(runTo({"--name", "sub/Sample", a}), 2, {"sub/Sample", "'/'"});
    expectRefused(runTo({"--name", "/", a}), 2, {"'/'"});
    expectRefused(runTo({"--name", std::string(251, 'n'), a}), 2, {"--name", "255"});
    // The longest number counts: ten pictures need a byte more than nine.
    std::vector<std::string> words{"--name", std::string(250, 'n')};
    words.insert(words.end(), 10, a);
    expectRefused(runTo(words), 2, {"--name", "255"});
    EXPECT_EQ(runTo({"--name", std::string(250, 'n'), a}).status, 0);
    EXPECT_EQ(outputs(), (std::set<std::string>{std::string(250, 'n') + "1.bmp"}));
}

TEST_F(Runner, ADestinationThatCannotBeWrittenToIsRefused) {
    if (geteuid() == 0) GTEST_SKIP() << "the system lets root write to every folder";
    const std::string a = grey("a.ppm", 10);
    fs::permissions(out, fs::perms::owner_read | fs::perms::owner_exec);
    expectRefused(runTo({a}), 3, {"--to", out, "cannot be written"});
    fs::permissions(out, fs::perms::owner_all);
}

TEST_F(Runner, AFunctionListOfPartialRecordsIsRefused) {
    const std::string a = grey("a.ppm", 10);
    FunctionRecord negative;
    negative.name = "Negative";
    negative.id = "51";
    const std::string list = in + "/list.qfk";
    const std::string whole = negative.toBytes() + negative.toBytes();
    for (const size_t bytes : {0, 1, 60, 100, 123, 125, 200}) {
        writeFile(list, whole.substr(0, bytes));
        expectRefused(runTo({"--functions", list, a}), 3, {"list.qfk", "124 bytes"});
    }
    expectRefused(runTo({"--functions", "/dev/null", a}), 3, {"/dev/null", "no regular file"});
    expectRefused(runTo({"--functions", in, a}), 3, {in, "folder"});
    writeFile(list, whole);
    EXPECT_EQ(runTo({"--functions", list, a}).status, 0);
}

TEST_F(Runner, APictureListOfPartialRecordsIsRefused) {
    const std::string a = grey("a.ppm", 10);
    const std::string list = in + "/list.qpkl";
    writePictureList(list, std::vector<std::string>{a, a});
    const std::string whole = readFile(list);
    writeFile(list, whole.substr(0, whole.size() - 1));
    expectRefused(runTo({"--pictures", list}), 3, {"list.qpkl"});
    writeFile(list, std::string(whole.size(), ' '));
    expectRefused(runTo({"--pictures", list}), 3, {"list.qpkl"});
    expectRefused(runTo({"--pictures", "/dev/null"}), 3, {"/dev/null", "no regular file"});
}

TEST_F(Runner, WindowModeTakesNoMorePicturesThanItsCountHolds) {
    std::string paths;
    for (int i = 0; i < 32768; ++i)
        paths += "p.ppm\n";
    expectRefused(runTo({"--mode", "window", "--from", "-"}, paths), 3, {"32768", "32767"});
    const Finished each = runTo({"--dry-run", "--from", "-"}, paths);
    EXPECT_EQ(each.status, 0) << each.err;
    const std::vector<std::string> plan = linesOf(each.out);
    ASSERT_EQ(plan.size(), 32768U);
    EXPECT_EQ(plan.back(), "p.ppm -> " + out + "/Sample32768.bmp (no such picture)");
    EXPECT_EQ(
        runTo({"--mode", "window", "--dry-run", "--from", "-"}, paths.substr(0, 32767 * 6)).status,
        0);
}

TEST_F(Runner, AReportThatWouldReplaceAPartOfTheRunIsRefused) {
    const std::string a = grey("a.ppm", 10);
    const std::string functions = in + "/list.qfk";
    FunctionRecord negative;
    negative.name = "Negative";
    negative.id = "51";
    writeFunctionList(functions, std::vector<FunctionRecord>{negative});
    const std::string pictures = in + "/list.qpkl";
    writePictureList(pictures, std::vector<std::string>{a});
    const std::string paths = in + "/paths.txt";
    writeFile(paths, a + "\n");
    const std::string link = in + "/link";
    fs::create_symlink(a, link);
    const std::string twin = in + "/twin";
    fs::create_hard_link(functions, twin);

    const std::vector<std::string> run{"--functions", functions, "--pictures", pictures, "--from",
                                       paths,         a};
    const auto withReport = [&](const std::string& report) {
        std::vector<std::string> words{"--report", report};
        words.insert(words.end(), run.begin(), run.end());
        return runTo(words);
    };
    std::vector<std::string> before;
    for (const std::string& file : {a, functions, pictures, paths})
        before.push_back(readFile(file));
    expectRefused(withReport(a), 3, {"--report", "a picture"});
    expectRefused(withReport(link), 3, {"--report", "a picture"});
    expectRefused(withReport(in + "/../in/a.ppm"), 3, {"--report", "a picture"});
    expectRefused(withReport(functions), 3, {"--report", "a function list"});
    expectRefused(withReport(twin), 3, {"--report", "a function list"});
    expectRefused(withReport(pictures), 3, {"--report", "a picture list"});
    expectRefused(withReport(paths), 3, {"--report", "list"});
    expectRefused(withReport(out + "/Sample3.bmp"), 3, {"--report", "an output"});
    expectRefused(withReport(out + "/../out/Sample1.bmp"), 3, {"--report", "an output"});
    std::vector<std::string> after;
    for (const std::string& file : {a, functions, pictures, paths})
        after.push_back(readFile(file));
    EXPECT_EQ(after, before);

    EXPECT_EQ(withReport(out + "/Sample4.bmp").status, 0) << "three pictures have three outputs";
}

TEST_F(Runner, AReportThatLeadsToAnOutputIsRefused) {
    const std::string a = grey("a.ppm", 10);
    writeFile(out + "/Sample1.bmp", "mine");
    fs::create_symlink(out + "/Sample1.bmp", in + "/report");
    const Finished end = runTo({"--report", in + "/report", a});
    EXPECT_EQ(end.status, 3);
    EXPECT_NE(end.err.find("an output"), std::string::npos) << end.err;
    EXPECT_EQ(readFile(out + "/Sample1.bmp"), "mine");
}

TEST_F(Runner, ApplyRefusesWhatItsSheetCannotShow) {
    const std::string a = grey("a.ppm", 10);
    expectRefused(runTo({"--apply", "Contrast:Level=4,level=5", a}), 2, {"level", "twice"});
    expectRefused(runTo({"--apply", "Contrast:Level=4,", a}), 2, {"KEY=VALUE"});
    expectRefused(runTo({"--apply", "Contrast:", a}), 2, {"KEY=VALUE"});
    for (const char* value : {"", "+", "+-4", "--4", "4.0", "0x4", "4 4"})
        expectRefused(runTo({"--apply", std::string("Contrast:Level=") + value, a}), 2,
                      {"Level", "-100 to 250"});
    expectRefused(runTo({"--apply", "Swap RGB:Invert=r", "--apply", "Swap RGB:Invert=g", a}), 2,
                  {"Invert", "whole run", "'r'"});
    expectRefused(runTo({"--apply", "Swap RGB:Kill=b", "--apply", "Swap RGB:kill=g", a}), 2,
                  {"kill", "whole run", "'b'"});
    expectRefused(runTo({"--apply", "Rotate Intelligently:Degrees=10", "--apply",
                         "Rotate Intelligently:Degrees=20", a}),
                  2, {"Degrees", "whole run", "'10'"});
    EXPECT_EQ(runTo({"--apply", "Rotate:Degrees=10", "--apply", "Rotate:Degrees=20", "--apply",
                     "Contrast:Level=+4", a})
                  .status,
              0);
}

}  // namespace
}  // namespace tessarine::tests
