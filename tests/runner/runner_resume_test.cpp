#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <thread>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "runner/journal.h"
#include "runner_fixture.h"

// Runs that do only what is stale by a journal.

namespace tessarine::tests {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using Names = std::set<std::string>;

class RunnerResume : public Runner {
  protected:
    /// So many pictures in `in`, each of its own.
    void pictures(int count) {
        for (int i = 0; i < count; ++i)
            picture(nameOf(i), randomBuffer(12 + i, 9, static_cast<uint32_t>(i)));
    }
    static std::string nameOf(int i) { return "p" + std::to_string(100 + i) + ".ppm"; }

    std::vector<std::string> resumed(const std::vector<std::string>& words) const {
        std::vector<std::string> all{"--to",     out,     "--format", "bmp",
                                     "--resume", journal, "--report", scratch / "report"};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }
    /// Runs over `in` and tells the names of the outputs that were made.
    Names made(std::vector<std::string> words, int status = 0) {
        words.push_back(in);
        return madeOf(words, status);
    }
    Names madeOf(const std::vector<std::string>& words, int status = 0) {
        const Finished end = run(resumed(words));
        EXPECT_EQ(end.status, status) << end.err;
        return withStatus("saved");
    }
    /// Outputs by what the last report says of them.
    Names withStatus(const std::string& status) const {
        Names names;
        for (const std::string& line : linesOf(readFile(scratch / "report"))) {
            const json entry = json::parse(line);
            if (entry.contains("summary") || entry.at("status") != status) continue;
            names.insert(fs::path(entry.at("output").get<std::string>()).filename());
        }
        return names;
    }
    std::string messageOn(const std::string& output) const {
        for (const std::string& line : linesOf(readFile(scratch / "report"))) {
            const json entry = json::parse(line);
            if (!entry.contains("summary") && entry.at("output") == out + "/" + output)
                return entry.at("message");
        }
        return "no such entry";
    }
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const std::string& name : outputs())
            all[name] = readFile(out + "/" + name);
        return all;
    }
    static timespec timeOf(const std::string& path) {
        struct stat status {};
        ::stat(path.c_str(), &status);
        return status.st_mtim;
    }
    static void setTime(const std::string& path, const timespec& time) {
        const timespec times[2] = {time, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    }
    /// Until a change gives files other marks for certain.
    static void settle() { std::this_thread::sleep_for(std::chrono::milliseconds(2100)); }

    const std::string journal = scratch / "journal";
};

const std::vector<std::string> negative{"--apply", "Negative"};
const std::vector<std::string> brighter{"--apply", "Brightness:Level=30"};

Names samples(const std::vector<int>& numbers) {
    Names names;
    for (const int number : numbers)
        names.insert("Sample" + std::to_string(number) + ".bmp");
    return names;
}

std::vector<int> upTo(int count) {
    std::vector<int> numbers;
    for (int i = 1; i <= count; ++i)
        numbers.push_back(i);
    return numbers;
}

TEST_F(RunnerResume, AfterNothingNoneIsDoneAgainAfterAFunctionAllAfterTouchingTenTen) {
    pictures(25);
    EXPECT_EQ(made(negative).size(), 25U);
    EXPECT_EQ(made(negative), Names{});
    EXPECT_EQ(withStatus("kept").size(), 25U);
    EXPECT_EQ(messageOn("Sample7.bmp"), "it is up to date");
    EXPECT_EQ(made(brighter), samples(upTo(25)));
    EXPECT_EQ(made(brighter), Names{});
    std::vector<int> touched;
    for (int i = 3; i < 23; i += 2) {
        touched.push_back(i + 1);
        setTime(in + "/" + nameOf(i), {1700000000, 123456789});
    }
    ASSERT_EQ(touched.size(), 10U);
    EXPECT_EQ(made(brighter), samples(touched));
    EXPECT_EQ(made(brighter), Names{});
    // The outputs are those of a run that knows no journal.
    const auto resumedFiles = files();
    fs::remove_all(out);
    fs::create_directory(out);
    ASSERT_EQ(runTo({"--apply", "Brightness:Level=30", in}).status, 0);
    EXPECT_TRUE(resumedFiles == files());
}

TEST_F(RunnerResume, WhatHasSettledIsKnownByItsMarks) {
    pictures(4);
    settle();
    EXPECT_EQ(made(negative).size(), 4U);
    const std::string before = readFile(journal);
    EXPECT_EQ(made(negative), Names{});
    EXPECT_EQ(readFile(journal), before) << "there was nothing to tell";
    // The same size and time of change, and yet another content.
    const std::string path = in + "/" + nameOf(2);
    const timespec time = timeOf(path);
    std::string bytes = readFile(path);
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    writeFile(path, bytes);
    setTime(path, time);
    EXPECT_EQ(made(negative), samples({3}));
}

TEST_F(RunnerResume, AnotherContentUnderTheSameMarksIsFoundWhereNothingHadSettled) {
    pictures(3);
    EXPECT_EQ(made(negative).size(), 3U);
    const std::string path = in + "/" + nameOf(0);
    const timespec time = timeOf(path);
    std::string bytes = readFile(path);
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    writeFile(path, bytes);
    setTime(path, time);
    EXPECT_EQ(made(negative), samples({1}));
}

TEST_F(RunnerResume, ContentIsReadAgainUntilItsMarksCanBeTrusted) {
    pictures(2);
    // A journal that tells of another content under the same marks, as if the file had changed
    // twice within a step of the clock.
    const auto tellOfOtherContent = [&](const std::string& settled) {
        std::string lines = readFile(journal);
        const size_t line = lines.rfind("{\"done\":\"" + out + "/Sample1.bmp");
        const size_t hash = lines.find("\"hash\":\"", line) + 8;
        EXPECT_EQ(lines.substr(lines.find("\"settled\":", line) + 10, 4), settled);
        lines[hash] = lines[hash] == '0' ? '1' : '0';
        writeFile(journal, lines);
    };
    ASSERT_EQ(made(negative).size(), 2U);
    tellOfOtherContent("fals");
    EXPECT_EQ(made(negative), samples({1}));
    settle();
    EXPECT_EQ(made(negative), Names{});
    tellOfOtherContent("true");
    EXPECT_EQ(made(negative), Names{}) << "nothing was read";
    // What was read then is known by its marks alone; another inode has it read.
    fs::copy_file(in + "/" + nameOf(0), in + "/copy");
    setTime(in + "/copy", timeOf(in + "/" + nameOf(0)));
    fs::rename(in + "/copy", in + "/" + nameOf(0));
    EXPECT_EQ(made(negative), samples({1}));
}

TEST_F(RunnerResume, ACopiedFolderIsReadOnceAndNotDoneAgain) {
    pictures(5);
    settle();
    EXPECT_EQ(made(negative).size(), 5U);
    ASSERT_EQ(runProgram({"/bin/cp", "-a", in, scratch / "copy"}, scratch.path()).status, 0);
    settle();
    const size_t lines = linesOf(readFile(journal)).size();
    EXPECT_EQ(madeOf({"--apply", "Negative", scratch / "copy"}), Names{});
    EXPECT_EQ(linesOf(readFile(journal)).size(), lines + 5);
    EXPECT_EQ(madeOf({"--apply", "Negative", scratch / "copy"}), Names{});
    EXPECT_EQ(linesOf(readFile(journal)).size(), lines + 5) << "from then on the marks do";
}

TEST_F(RunnerResume, AnOutputThatIsGoneOrChangedIsMadeAgain) {
    pictures(5);
    ASSERT_EQ(made(negative).size(), 5U);
    const auto whole = files();
    fs::remove(out + "/Sample2.bmp");
    writeFile(out + "/Sample3.bmp", "cut");
    const std::string fourth = readFile(out + "/Sample4.bmp");
    writeFile(out + "/Sample4.bmp", fourth);
    setTime(out + "/Sample4.bmp", {1700000000, 0});
    EXPECT_EQ(made(negative), samples({2, 3, 4}));
    EXPECT_TRUE(files() == whole);
}

TEST_F(RunnerResume, AnOutputOfTheSameSizeAndTimeThatAnotherRunPutThereIsMadeAgain) {
    // Pictures of one size are files of one size in BMP, and all have their pictures' times.
    pictures(3);
    const std::vector<std::string> keeping{"--keep-metadata", "--apply", "Negative"};
    ASSERT_EQ(made(keeping).size(), 3U);
    const auto whole = files();
    ASSERT_EQ(
        runTo({"--keep-metadata", "--overwrite", "--apply", "Brightness:Level=30", in}).status, 0);
    ASSERT_FALSE(files() == whole);
    EXPECT_EQ(made(keeping), samples({1, 2, 3}));
    EXPECT_TRUE(files() == whole);
    EXPECT_EQ(made(keeping), Names{});
}

TEST_F(RunnerResume, WhatReplacedAnOwnOutputAndWasNotToldIsMadeAgain) {
    pictures(2);
    std::vector<std::string> keeping{"--keep-metadata", "--jobs", "1", "--apply", "Negative"};
    ASSERT_EQ(made(keeping).size(), 2U);
    const auto whole = files();
    const std::string before = readFile(journal);
    ASSERT_EQ(made({"--keep-metadata", "--jobs", "1", "--apply", "Brightness:Level=30"}).size(),
              2U);
    // As if the program had been killed behind the names and before the lines.
    std::string lines = before;
    for (const std::string& line : linesOf(readFile(journal).substr(before.size())))
        if (!line.starts_with("{\"done\"")) lines += line + "\n";
    writeFile(journal, lines);
    EXPECT_EQ(made(keeping), samples({1, 2}));
    EXPECT_TRUE(files() == whole);
}

TEST_F(RunnerResume, AnOutputThatTheJournalDoesNotKnowIsTreatedAsEver) {
    pictures(3);
    writeFile(out + "/Sample2.bmp", "mine");
    EXPECT_EQ(made(negative), samples({1, 3}));
    EXPECT_EQ(withStatus("kept"), samples({2}));
    EXPECT_EQ(messageOn("Sample2.bmp"), "");
    EXPECT_EQ(made(brighter), samples({1, 3}));
    EXPECT_EQ(readFile(out + "/Sample2.bmp"), "mine");
    EXPECT_EQ(made({"--apply", "Negative", "--on-exists", "fail"}, 1), samples({1, 3}));
    EXPECT_EQ(withStatus("failed"), samples({2}));
    EXPECT_EQ(readFile(out + "/Sample2.bmp"), "mine");
    // With leave to overwrite it becomes the journal's, and what is up to date stays.
    EXPECT_EQ(made({"--apply", "Negative", "--overwrite"}), samples({2}));
    EXPECT_EQ(made(brighter), samples({1, 2, 3}));
}

TEST_F(RunnerResume, OnlyTheNewPictureOfNamedOnesIsDoneUnlessNumbersCount) {
    pictures(4);
    const std::vector<std::string> named{"--keep-names", "--apply", "Negative"};
    ASSERT_EQ(made(named).size(), 4U);
    grey("first.ppm", 10);
    EXPECT_EQ(made(named), (Names{"first.bmp"}));

    const std::vector<std::string> noise{"--keep-names", "--apply", "Noise:Intensity=40"};
    ASSERT_EQ(made(noise).size(), 5U);
    EXPECT_EQ(made(noise), Names{});
    grey("earlier.ppm", 10);
    EXPECT_EQ(made(noise).size(), 6U) << "each has another number, and other random numbers";
}

TEST_F(RunnerResume, WhatShapesTheOutputsCountsAndNothingElse) {
    pictures(3);
    const std::vector<std::string> turned{"--apply", "Rotate Intelligently", "--apply", "Swap RGB"};
    const auto with = [&](std::vector<std::string> words) {
        words.insert(words.begin(), turned.begin(), turned.end());
        return made(words).size();
    };
    EXPECT_EQ(with({}), 3U);
    EXPECT_EQ(with({"--jobs", "1", "--threads", "2", "--timeout", "50", "--quiet"}), 0U);
    EXPECT_EQ(with({"--degrees", "20"}), 3U);
    EXPECT_EQ(with({"--degrees", "20", "--invert", "g"}), 3U);
    EXPECT_EQ(with({"--degrees", "20", "--kill", "g"}), 3U);
    EXPECT_EQ(with({"--degrees", "20", "--kill", "g"}), 0U);
}

TEST_F(RunnerResume, AnotherFormatOfTheSameExtensionCounts) {
    pictures(3);
    const auto to = [&](const std::string& format) {
        EXPECT_EQ(run({"--to", out, "--format", format, "--resume", journal, "--report",
                       scratch / "report", in})
                      .status,
                  0);
        return withStatus("saved").size();
    };
    EXPECT_EQ(to("jpg-good"), 3U);
    EXPECT_EQ(to("jpg-bad"), 3U);
    EXPECT_EQ(to("jpg-bad"), 0U);
    EXPECT_EQ(to("png"), 3U);
    EXPECT_EQ(to("jpg-bad"), 0U) << "both stand beside each other";
}

TEST_F(RunnerResume, TheFilesBesideAPictureCountWithIt) {
    // Two pixels of a paint program that keeps its colours in a palette beside the picture.
    writeFile(in + "/figure.cut", std::string("\x02\0\x01\0\0\0\x04\0\x02\x00\x01\0", 12));
    grey("other.ppm", 10);
    const std::string paletteStart("AH\0\0\0\0\x0A\0\0\0\0\0\x01\0\xFF\0\xFF\0\xFF\0", 20);
    const auto palette = [&](char red) {
        std::string bytes = paletteStart + std::string(20, '\0');
        for (int i = 0; i < 2; ++i)
            bytes += std::string{red, '\0', '\x10', '\0', '\x20', '\0'};
        return bytes;
    };
    EXPECT_EQ(made({}), samples({1, 2}));
    EXPECT_EQ(made({}), Names{});
    writeFile(in + "/figure.pal", palette('\x40'));
    EXPECT_EQ(made({}), samples({1}));
    EXPECT_EQ(made({}), Names{});
    const Pixel before = readBitmapFile(out + "/Sample1.bmp").at(0, 0);
    writeFile(in + "/figure.pal", palette('\x70'));
    EXPECT_EQ(made({}), samples({1}));
    EXPECT_FALSE(readBitmapFile(out + "/Sample1.bmp").at(0, 0) == before);
    fs::remove(in + "/figure.pal");
    EXPECT_EQ(made({}), samples({1}));
}

TEST_F(RunnerResume, WhatFailedIsTriedAgainAndClaimsNoOutput) {
    pictures(2);
    writeFile(in + "/p101.ppm", "no picture");
    EXPECT_EQ(made(negative, 1), samples({1}));
    EXPECT_EQ(made(negative, 1), Names{});
    EXPECT_EQ(withStatus("failed"), samples({2}));
    // What somebody puts there meanwhile is theirs.
    writeFile(out + "/Sample2.bmp", "mine");
    grey("p101.ppm", 50);
    EXPECT_EQ(made(negative), Names{});
    EXPECT_EQ(readFile(out + "/Sample2.bmp"), "mine");
    fs::remove(out + "/Sample2.bmp");
    EXPECT_EQ(made(negative), samples({2}));
}

TEST_F(RunnerResume, WhatAKilledRunPublishedAndDidNotTellIsItsOwn) {
    pictures(2);
    ASSERT_EQ(made({"--apply", "Negative", "--jobs", "1"}), samples({1, 2}));
    const auto whole = files();
    // As if the program had been killed behind the name and before the line.
    std::string lines = readFile(journal);
    lines.erase(lines.find("{\"done\":\"" + out + "/Sample2.bmp"));
    writeFile(journal, lines);
    EXPECT_EQ(made(negative), samples({2}));
    EXPECT_TRUE(files() == whole);
    EXPECT_EQ(made(brighter), samples({1, 2}));
}

TEST_F(RunnerResume, AKilledRunEndsCompleteAndRepeatsOnlyWhatWasUnderWay) {
    constexpr int count = 40;
    for (int i = 0; i < count; ++i)
        picture(nameOf(i), randomBuffer(120, 90, static_cast<uint32_t>(i)));
    const std::vector<std::string> words{
        "--apply", "Noise:Intensity=40", "--apply", "Blur", "--jobs", "2", in};
    const auto runInto = [&](const std::string& folder) {
        std::vector<std::string> all{"--to", folder, "--format", "bmp"};
        all.insert(all.end(), words.begin(), words.end());
        return run(all);
    };
    const std::string undisturbed = scratch / "undisturbed";
    fs::create_directory(undisturbed);
    ASSERT_EQ(runInto(undisturbed).status, 0);

    const auto recorded = [&] {
        Names names;
        Journal(journal, Journal::Use::look).read([&](const JournalEntry& entry) {
            if (entry.state == JournalEntry::State::done)
                names.insert(fs::path(entry.output).filename());
        });
        return names;
    };
    std::vector<std::string> all = resumed(words);
    all.insert(all.begin(), TESSARINE_BATCH);
    int killed = 0;
    // Each time a few pictures farther.
    for (size_t enough = 4; enough < count; enough += 9) {
        const Running running(all, "/dev/null", scratch / "stdout", scratch / "stderr");
        while (recorded().size() < enough && !running.hasEnded())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        running.kill(SIGKILL);
        killed += running.wait() == -SIGKILL ? 1 : 0;
    }
    EXPECT_GE(killed, 2) << "too few runs were met under way";
    const Names before = recorded();
    const Names saved = madeOf(words);
    for (const std::string& name : before)
        EXPECT_EQ(saved.count(name), 0U) << name << " was done twice";
    EXPECT_EQ(saved.size() + before.size(), size_t{count});
    ASSERT_EQ(outputs().size(), size_t{count});
    for (const std::string& name : outputs())
        EXPECT_TRUE(readFile(out + "/" + name) == readFile(undisturbed + "/" + name)) << name;
    EXPECT_EQ(madeOf(words), Names{});
}

TEST_F(RunnerResume, SharesMayTellOneJournalAtOnce) {
    pictures(30);
    std::vector<std::unique_ptr<Running>> shares;
    for (int share = 0; share < 3; ++share) {
        const std::string name = std::to_string(share);
        shares.push_back(std::make_unique<Running>(
            std::vector<std::string>{TESSARINE_BATCH, "--to", out, "--format", "bmp", "--apply",
                                     "Negative", "--resume", journal, "--shard", name + "/3", in},
            "/dev/null", scratch / ("out" + name), scratch / ("err" + name)));
    }
    for (const auto& share : shares)
        EXPECT_EQ(share->wait(), 0);
    EXPECT_EQ(outputs().size(), 30U);
    EXPECT_EQ(made(negative), Names{});
    // A share alone knows its own as well.
    EXPECT_EQ(made({"--apply", "Negative", "--shard", "1/3"}), Names{});
    EXPECT_EQ(withStatus("kept").size(), 10U);
}

TEST_F(RunnerResume, AFileThatIsNoJournalIsRefusedAndStays) {
    const std::string a = grey("a.ppm", 10);
    const std::string other = scratch / "other.txt";
    writeFile(other, "some notes\n");
    expectRefused(runTo({"--resume", other, a}), 3, {"--resume", other, "it is no journal"});
    EXPECT_EQ(readFile(other), "some notes\n");
    const std::string before = readFile(a);
    expectRefused(runTo({"--resume", a, a}), 3, {"--resume", a, "a picture"});
    EXPECT_EQ(readFile(a), before);
    expectRefused(runTo({"--resume", out + "/Sample1.bmp", a}), 3, {"--resume", "an output"});
    expectRefused(runTo({"--resume", scratch / "x", "--report", scratch / "x", a}), 3,
                  {"--resume", "the report"});
    expectRefused(runTo({"--resume", out, a}), 3, {"no regular file"});
    expectRefused(runTo({"--resume", scratch / "none/journal", a}), 3, {"No such file"});
    expectRefused(runTo({"--resume", "", a}), 2, {"--resume", "empty"});
    expectRefused(runTo({"--resume", journal, "--mode", "window", a}), 2,
                  {"--resume", "--mode window", "--mode independent"});
    EXPECT_FALSE(fs::exists(journal));
}

TEST_F(RunnerResume, AStaleOutputThatIsAPictureOfTheRunIsNotReplaced) {
    const std::string a = grey("a.ppm", 10);
    ASSERT_EQ(madeOf({"--apply", "Negative", a}), samples({1}));
    const std::string output = out + "/Sample1.bmp";
    const std::string before = readFile(output);
    const Finished end = run(resumed({"--apply", "Negative", "--apply", "Blur", a, output}));
    EXPECT_EQ(end.status, 3);
    EXPECT_THAT(end.err, HasSubstr("'" + output + "' is a picture of this run"));
    EXPECT_EQ(readFile(output), before);
}

TEST_F(RunnerResume, ADryRunTellsWhatIsUpToDateAndWritesNothing) {
    pictures(3);
    ASSERT_EQ(made(negative).size(), 3U);
    setTime(in + "/" + nameOf(1), {1700000000, 0});
    const std::string before = readFile(journal);
    const Finished end = run(resumed({"--apply", "Negative", "--dry-run", in}));
    EXPECT_EQ(end.status, 0) << end.err;
    const std::vector<std::string> lines = linesOf(end.out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], testing::EndsWith("Sample1.bmp (up to date, kept)"));
    EXPECT_THAT(lines[1], testing::EndsWith("Sample2.bmp (exists, replaced)"));
    EXPECT_EQ(readFile(journal), before);
    EXPECT_EQ(run({"--to", out, "--dry-run", "--resume", scratch / "new", in}).status, 0);
    EXPECT_FALSE(fs::exists(scratch / "new"));
}

TEST_F(RunnerResume, AJournalThatIsNotTakenIsToldAndThePicturesAreSaved) {
    pictures(6);
    // The outputs are small enough for a limit on the size of files, the journal soon is not.
    std::string lines = "{\"tessarine-journal\":1}\n";
    while (lines.size() < 32 * 1024 - 200)
        lines += "{\"left\":\"/elsewhere\"}\n";
    writeFile(journal, lines);
    std::vector<std::string> words = resumed({"--quiet", "--apply", "Negative", in});
    const Finished end = runThroughShell("ulimit -f 64; exec \"$@\"", words);
    EXPECT_EQ(end.status, 1) << end.err;
    EXPECT_THAT(end.err, HasSubstr("--resume: '" + journal + "' could not be written whole"));
    EXPECT_EQ(outputs().size(), 6U);
}

TEST_F(RunnerResume, BytesThatAreNoTextAreKeptApart) {
    const std::string first = grey("\xE9.ppm", 10);
    const std::string second = grey("\xE8.ppm", 20);
    EXPECT_EQ(madeOf({"--keep-names", first, second}).size(), 1U) << "replaced in the report";
    EXPECT_EQ(outputs(), (Names{"\xE8.bmp", "\xE9.bmp"}));
    grey("\xE8.ppm", 30);
    EXPECT_EQ(madeOf({"--keep-names", first, second}).size(), 1U);
    EXPECT_EQ(levelOf("\xE8.bmp"), 30);
    EXPECT_EQ(levelOf("\xE9.bmp"), 10);
}

}  // namespace
}  // namespace tessarine::tests
