#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

#include <gmock/gmock.h>

#include "batch/list_files.h"
#include "imagefiles/disk.h"
#include "runner_fixture.h"

// Outputs in folders as their inputs are, and under the names of their inputs.

namespace tessarine::tests {
namespace {

using testing::HasSubstr;
using Names = std::set<std::string>;

class RunnerNames : public Runner {
  protected:
    /// All files below the destination.
    Names tree() const {
        Names names;
        for (const auto& entry : fs::recursive_directory_iterator(out))
            if (!entry.is_directory() || entry.is_symlink())
                names.insert(entry.path().lexically_relative(out).string());
        return names;
    }
    void expectTree(const std::vector<std::string>& words, const Names& names) {
        fs::remove_all(out);
        fs::create_directory(out);
        const Finished end = runTo(words);
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_EQ(tree(), names);
    }
    /// The program in another folder.
    Finished runIn(const std::string& folder, std::vector<std::string> words) {
        words.insert(words.begin(), {"--to", out, "--format", "bmp"});
        return runThroughShell("cd '" + folder + "' && exec \"$@\"", std::move(words));
    }
};

TEST_F(RunnerNames, TheTreeOfAFolderIsKeptBelowTheDestination) {
    grey("a.ppm", 1);
    grey("north/b.ppm", 2);
    grey("north/far/c.ppm", 3);
    expectTree({"--keep-tree", "--recursive", in},
               {"Sample1.bmp", "north/Sample2.bmp", "north/far/Sample3.bmp"});
    expectTree({"--keep-tree", "--keep-names", "--recursive", in},
               {"a.bmp", "north/b.bmp", "north/far/c.bmp"});
    EXPECT_EQ(levelOf("north/far/c.bmp"), 3);
    expectTree({"--keep-names", "--recursive", in}, {"a.bmp", "b.bmp", "c.bmp"});
    // However the folder is written.
    for (const std::string& folder : {in + "/", in + "/./north/..", in + "//"})
        expectTree({"--keep-tree", "--keep-names", "--recursive", folder},
                   {"a.bmp", "north/b.bmp", "north/far/c.bmp"});
    fs::remove_all(out);
    fs::create_directory(out);
    EXPECT_EQ(runIn(in + "/north", {"--keep-tree", "--keep-names", "--recursive", "."}).status, 0);
    EXPECT_EQ(tree(), (Names{"b.bmp", "far/c.bmp"}));
}

TEST_F(RunnerNames, EachSourceOfPicturesHasItsOwnTree) {
    const std::string a = grey("north/a.ppm", 1);
    const std::string b = grey("north/far/b.ppm", 2);
    const std::string c = grey("south/c.ppm", 3);
    // A picture by itself has no place, one of a folder has that below the folder.
    expectTree({"--keep-tree", b, "--recursive", in + "/south", in + "/north"},
               {"Sample1.bmp", "Sample2.bmp", "Sample3.bmp", "far/Sample4.bmp"});
    // Those of a list have that below the deepest folder that holds them all.
    writePictureList(in + "/list.qpkl", std::vector<std::string>{a, b});
    expectTree({"--keep-tree", "--keep-names", "--pictures", in + "/list.qpkl"},
               {"a.bmp", "far/b.bmp"});
    writeFile(in + "/paths", in + "/south/../north/far/b.ppm\n" + c + "\n" + in + "/north\n");
    expectTree({"--keep-tree", "--keep-names", "--from", in + "/paths"},
               {"north/a.bmp", "north/far/b.bmp", "south/c.bmp"});
    // With a folder to be told from, a list of some keeps the places of all.
    writeFile(in + "/paths", b + "\n");
    expectTree({"--keep-tree", "--keep-names", "--below", in, "--from", in + "/paths", c},
               {"north/far/b.bmp", "south/c.bmp"});
    fs::create_directory_symlink(in, scratch / "door");
    expectTree({"--keep-tree", "--keep-names", "--below", scratch / "door", b},
               {"north/far/b.bmp"});
    fs::remove_all(out);
    fs::create_directory(out);
    expectRefused(runTo({"--keep-tree", "--below", in + "/north", a, c}), 3,
                  {"--below", c, in + "/north"});
}

TEST_F(RunnerNames, ANameIsTheInputsWithTheFormatsExtension) {
    const std::vector<std::string> words{"--keep-names", grey("two.dots.ppm", 1),
                                         grey(".hidden.ppm", 2), grey("UPPER.PPM", 3),
                                         grey("upper.pgm.ppm", 4)};
    expectTree(words, {"two.dots.bmp", ".hidden.bmp", "UPPER.bmp", "upper.pgm.bmp"});
    // Letters of another case are another name.
    expectTree({"--keep-names", grey("x/A.ppm", 5), grey("y/a.ppm", 6)}, {"A.bmp", "a.bmp"});
}

TEST_F(RunnerNames, TwoPicturesOfOneOutputAreRefusedBeforeTheStart) {
    const std::string a = grey("a.ppm", 1);
    writeFile(in + "/a.pgm", "P5 1 1 255\nx");
    const std::string other = grey("other/a.ppm", 2);
    expectRefused(runTo({"--keep-names", a, in + "/a.pgm"}), 3,
                  {a, in + "/a.pgm", "both be saved as", out + "/a.bmp"});
    expectRefused(runTo({"--keep-names", a, other}), 3, {a, other});
    expectRefused(runTo({"--keep-names", a, a}), 3, {a, "both"});
    expectRefused(runTo({"--keep-names", "--dry-run", a, a}), 3, {a, "both"});
    // Also where one has another name by a link.
    fs::create_directories(out + "/b");
    fs::create_directory_symlink("b", out + "/c");
    grey("tree/b/p.ppm", 1);
    grey("tree/c/p.ppm", 2);
    const Finished linked = runTo({"--keep-tree", "--keep-names", "--recursive", in + "/tree"});
    EXPECT_EQ(linked.status, 3);
    EXPECT_THAT(linked.err, HasSubstr("both be saved as"));
    EXPECT_EQ(tree(), Names{"c"}) << "the link alone";
    fs::remove(out + "/c");
    EXPECT_EQ(runTo({"--keep-tree", "--keep-names", "--recursive", in + "/tree"}).status, 0);
    EXPECT_EQ(tree(), (Names{"b/p.bmp", "c/p.bmp"}));
}

TEST_F(RunnerNames, AnOutputIsNoFolderOfOthers) {
    grey("tree/x.ppm", 1);
    grey("tree/x.bmp/deep/y.ppm", 2);
    expectRefused(runTo({"--keep-tree", "--keep-names", "--recursive", in + "/tree"}), 3,
                  {in + "/tree/x.ppm", "a folder of other outputs"});
}

TEST_F(RunnerNames, FoldersOfTheDestinationThatLeadOutOfItAreRefused) {
    grey("tree/b/p.ppm", 1);
    const std::vector<std::string> words{"--keep-tree", "--recursive", in + "/tree"};
    const auto expectNot = [&](const std::string& why) {
        const Finished end = runTo(words);
        EXPECT_EQ(end.status, 3);
        EXPECT_THAT(end.err, HasSubstr(why));
        EXPECT_THAT(end.err, HasSubstr("'" + out + "/b'"));
        fs::remove_all(out);
        fs::create_directory(out);
    };
    fs::create_directory(scratch / "elsewhere");
    fs::create_directory_symlink(scratch / "elsewhere", out + "/b");
    expectNot("out of the destination");
    EXPECT_TRUE(fs::is_empty(scratch / "elsewhere"));
    fs::create_directory_symlink("..", out + "/b");
    expectNot("out of the destination");
    fs::create_directory_symlink(out + "/none", out + "/b");
    expectNot("is no folder");
    writeFile(out + "/b", "a file");
    expectNot("is no folder");
    // Inside the destination links may lead anywhere.
    fs::create_directory(out + "/real");
    fs::create_directory_symlink("real", out + "/b");
    EXPECT_EQ(runTo(words).status, 0);
    EXPECT_TRUE(fs::exists(out + "/real/Sample1.bmp"));
}

TEST_F(RunnerNames, FoldersAreMadeAsTheSystemWouldMakeThem) {
    grey("tree/b/c/p.ppm", 1);
    const Finished end = runThroughShell(
        "umask 027; exec \"$@\"",
        {"--to", out, "--format", "bmp", "--keep-tree", "--recursive", in + "/tree"});
    EXPECT_EQ(end.status, 0) << end.err;
    for (const std::string& folder : {out + "/b", out + "/b/c"}) {
        struct stat status {};
        ASSERT_EQ(::stat(folder.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0750U) << folder;
    }
    EXPECT_EQ(runTo({"--keep-tree", "--recursive", "--dry-run", in}).status, 0);
    EXPECT_FALSE(fs::exists(out + "/tree")) << "a dry run makes none";
}

TEST_F(RunnerNames, TheRunsOwnPicturesAreProtectedInAllFolders) {
    grey("tree/b/p.ppm", 1);
    const std::string tree = in + "/tree";
    // The same tree for inputs and outputs: each would replace itself.
    ASSERT_EQ(
        run({"--to", tree, "--format", "ppm", "--keep-tree", "--keep-names", "--recursive", tree})
            .status,
        0)
        << "kept";
    const std::string before = readFile(tree + "/b/p.ppm");
    const Finished end = run({"--to", tree, "--format", "ppm", "--keep-tree", "--keep-names",
                              "--recursive", "--overwrite", "--apply", "Negative", tree});
    EXPECT_EQ(end.status, 3);
    EXPECT_THAT(end.err, HasSubstr("'" + tree + "/b/p.ppm' is a picture of this run"));
    EXPECT_EQ(readFile(tree + "/b/p.ppm"), before);
    // A picture that is not there and would be made first.
    const std::string later = out + "/b/p.bmp";
    const Finished made = runTo({"--keep-tree", "--keep-names", "--recursive", tree, later});
    EXPECT_EQ(made.status, 3);
    EXPECT_THAT(made.err, HasSubstr("'" + later + "' is a picture of this run, is not there"));
    // A report in the place of an output.
    for (const char* option : {"--report", "--failed-list", "--resume", "--plan"}) {
        const Finished report =
            runTo({"--keep-tree", "--keep-names", "--recursive", tree, option, later});
        EXPECT_EQ(report.status, 3);
        EXPECT_THAT(report.err,
                    HasSubstr(option + std::string(": '") + later + "' is an output of this run"));
    }
    EXPECT_TRUE(outputs().empty());
}

TEST_F(RunnerNames, DraftsOfKilledRunsGoFromAllFolders) {
    grey("tree/b/p.ppm", 1);
    fs::create_directory(out + "/b");
    const std::string left = out + "/b/" + Draft::namePrefix() + "0123456789abcdef.bmp";
    writeFile(left, "half");
    EXPECT_EQ(runTo({"--keep-tree", "--recursive", in + "/tree"}).status, 0);
    EXPECT_FALSE(fs::exists(left));
    EXPECT_EQ(tree(), Names{"b/Sample1.bmp"});
}

TEST_F(RunnerNames, OverLongNamesAreRefused) {
    const std::string longest = grey(std::string(251, 'n') + ".ppm", 1);
    expectTree({"--keep-names", longest}, {std::string(251, 'n') + ".bmp"});
    fs::remove_all(out);
    fs::create_directory(out);
    expectRefused(run({"--to", out, "--format", "jpg-good", "--keep-names",
                       in + "/" + std::string(252, 'n') + ".x"}),
                  3, {"--keep-names", "255 bytes"});
    expectRefused(runTo({"--keep-names", in + "/.tessarine-x.ppm"}), 3, {"--keep-names", "drafts"});
}

TEST_F(RunnerNames, TheyAreForIndependentRunsAndForOneWayOfNaming) {
    const std::string a = grey("a.ppm", 1);
    for (const char* option : {"--keep-tree", "--keep-names"})
        expectRefused(runTo({option, "--mode", "window", a}), 2, {option, "--mode independent"});
    expectRefused(runTo({"--keep-names", "--name", "Trip", a}), 2, {"--keep-names", "--name"});
    expectRefused(runTo({"--below", in, a}), 2, {"--below", "--keep-tree"});
}

TEST_F(RunnerNames, NumbersAreThoseOfTheWholeBasketInEveryFolder) {
    for (const char* name : {"a/1.ppm", "a/2.ppm", "b/3.ppm", "b/4.ppm", "b/5.ppm"})
        picture(name, randomBuffer(20, 20, 5));
    const std::vector<std::string> noise{"--apply", "Noise:Intensity=40", "--recursive", in};
    std::vector<std::string> words = noise;
    expectTree(words, {"Sample1.bmp", "Sample2.bmp", "Sample3.bmp", "Sample4.bmp", "Sample5.bmp"});
    const std::string fourth = readFile(out + "/Sample4.bmp");
    fs::remove_all(out);
    fs::create_directory(out);
    for (const char* share : {"0/2", "1/2"}) {
        words = noise;
        words.insert(words.end(), {"--keep-tree", "--keep-names", "--shard", share});
        EXPECT_EQ(runTo(words).status, 0);
    }
    EXPECT_EQ(tree(), (Names{"a/1.bmp", "a/2.bmp", "b/3.bmp", "b/4.bmp", "b/5.bmp"}));
    EXPECT_TRUE(readFile(out + "/b/4.bmp") == fourth);
}

}  // namespace
}  // namespace tessarine::tests
