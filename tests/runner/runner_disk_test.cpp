#include <filesystem>
#include <functional>
#include <sys/mount.h>
#include <sys/stat.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "runner_fixture.h"
#include "support/other_disks.h"

// Disks that do not take what is written. Each failure costs its picture and is told; the run goes
// on, and what has an output's name is whole.

namespace tessarine::tests {
namespace {

using nlohmann::json;

class RunnerDisk : public Runner {
  protected:
    RunnerDisk() {
        small = picture("small.ppm", randomBuffer(20, 10, 1));
        large = picture("large.ppm", randomBuffer(200, 150, 2));
    }
    /// Runs to BMP with a report, one picture after the other: which of them find room hangs on
    /// that.
    Finished runReported(std::vector<std::string> words) {
        words.insert(words.end(), {"--quiet", "--jobs", "1", "--report", scratch / "report"});
        return runTo(std::move(words));
    }
    json entry(size_t number) const {
        return json::parse(linesOf(readFile(scratch / "report")).at(number - 1));
    }
    void expectSaved(size_t number, const std::string& input) {
        EXPECT_EQ(entry(number).at("status"), "saved") << entry(number);
        const std::string output = out + "/Sample" + std::to_string(number) + ".bmp";
        EXPECT_EQ(readFile(output), bitmapOf(input)) << number;
        EXPECT_EQ(entry(number).at("bytes"), fs::file_size(output));
    }
    /// A failure with the output's name and the reason in its message.
    void expectFailed(size_t number, const std::string& reason) {
        const json failed = entry(number);
        const std::string output = out + "/Sample" + std::to_string(number) + ".bmp";
        EXPECT_EQ(failed.at("status"), "failed") << failed;
        EXPECT_EQ(failed.at("error"), "cannot-write");
        const std::string message = failed.at("message");
        EXPECT_NE(message.find(output), std::string::npos) << message;
        EXPECT_NE(message.find(reason), std::string::npos) << message;
        EXPECT_EQ(failed.at("bytes"), 0);
    }
    /// What a run on a roomy disk makes of a picture.
    std::string bitmapOf(const std::string& input) {
        std::string& bytes = bitmaps_[input];
        if (bytes.empty()) {
            const std::string roomy = scratch / "roomy";
            fs::create_directory(roomy);
            EXPECT_EQ(run({"--to", roomy, "--format", "bmp", "--quiet", input}).status, 0);
            bytes = readFile(roomy + "/Sample1.bmp");
            fs::remove_all(roomy);
        }
        return bytes;
    }
    /// Does something on a disk of its own in place of the destination.
    void onDisk(const char* options, const std::function<void()>& work) {
        bitmapOf(small);
        bitmapOf(large);
        const int end = inChild([&] {
            if (!mountSmallDisk(out, options)) return noDisk;
            work();
            return HasFailure() ? 1 : 0;
        });
        if (end == noDisk) GTEST_SKIP() << "no small disk can be mounted here";
        EXPECT_EQ(end, 0);
    }
    /// Has something happen while a run is under way that has saved a first picture. All of its
    /// pictures are in the report; those that are saved come before those that fail for `reason`.
    void expectFailuresAfter(const std::function<bool()>& happening, const std::string& reason) {
        constexpr size_t pictures = 60;
        std::vector<std::string> words{
            TESSARINE_BATCH, "--to",   out, "--format", "bmp",
            "--quiet",       "--jobs", "1", "--report", scratch / "report"};
        words.insert(words.end(), pictures, large);
        const Running running(words, "/dev/null", scratch / "stdout", scratch / "stderr");
        ASSERT_TRUE(waitForAnOutput(running)) << readFile(scratch / "stderr");
        bool happened = false;
        while (!happened && !running.hasEnded())
            happened = happening();
        EXPECT_EQ(running.wait(), 1) << readFile(scratch / "stderr");
        ASSERT_TRUE(happened);
        ASSERT_EQ(linesOf(readFile(scratch / "report")).size(), pictures + 1);
        size_t saved = 0;
        while (saved < pictures && entry(saved + 1).at("status") == "saved")
            ++saved;
        EXPECT_GT(saved, 0U);
        EXPECT_LT(saved, pictures);
        for (size_t number = saved + 1; number <= pictures; ++number)
            expectFailed(number, reason);
        EXPECT_EQ(entry(pictures + 1).at("summary").at("failed"), pictures - saved);
        EXPECT_EQ(linesOf(readFile(scratch / "stderr")).size(), pictures - saved);
    }

    std::string small;
    std::string large;

  private:
    std::map<std::string, std::string> bitmaps_;
};

TEST_F(RunnerDisk, AFullDiskCostsThePicturesThatDoNotFit) {
    onDisk("size=64k", [&] {
        EXPECT_EQ(runReported({small, large, small}).status, 1);
        expectSaved(1, small);
        expectFailed(2, "No space left on device");
        expectSaved(3, small);
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample3.bmp"}));
    });
}

TEST_F(RunnerDisk, ADiskThatFillsUpHasWholeOutputsAlone) {
    // Room for two of the large ones and some small ones.
    onDisk("size=240k", [&] {
        EXPECT_EQ(runReported({large, large, large, small, large}).status, 1);
        expectSaved(1, large);
        expectSaved(2, large);
        expectFailed(3, "No space left on device");
        expectSaved(4, small);
        expectFailed(5, "No space left on device");
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Sample4.bmp"}));
    });
}

TEST_F(RunnerDisk, OnAFullDiskAnOutputThatWasToBeReplacedStays) {
    onDisk("size=64k", [&] {
        writeFile(out + "/Sample1.bmp", "older");
        EXPECT_EQ(runReported({"--overwrite", large}).status, 1);
        expectFailed(1, "No space left on device");
        EXPECT_EQ(readFile(out + "/Sample1.bmp"), "older");
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp"}));
    });
}

TEST_F(RunnerDisk, ADiskWithoutRoomForOneMoreFileIsToldOf) {
    // The folder itself, and two files.
    onDisk("nr_inodes=3", [&] {
        EXPECT_EQ(runReported({small, small, small}).status, 1);
        expectSaved(1, small);
        expectSaved(2, small);
        expectFailed(3, "No space left on device");
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp"}));
    });
}

TEST_F(RunnerDisk, InWindowModeAFullDiskIsToldByTheReportAlone) {
    onDisk("size=64k", [&] {
        const Finished end =
            runTo({"--mode", "window", "--report", scratch / "report", small, large, small});
        EXPECT_EQ(end.status, 1);
        expectSaved(1, small);
        expectFailed(2, "No space left on device");
        expectSaved(3, small);
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample3.bmp"}));
        EXPECT_NE(end.out.find(" Processed Image Saved as Sample2.bmp\n"), std::string::npos);
        EXPECT_EQ(end.out.find("No space"), std::string::npos);
    });
}

TEST_F(RunnerDisk, AReadOnlyDestinationKeepsTheRunFromStarting) {
    onDisk("ro", [&] {
        const Finished end = runReported({small});
        EXPECT_EQ(end.status, 3);
        EXPECT_NE(end.err.find("the folder '" + out + "' cannot be written to"), std::string::npos)
            << end.err;
    });
}

TEST_F(RunnerDisk, ADestinationThatBecomesReadOnlyFailsThePicturesAfterThat) {
    onDisk("size=100m", [&] {
        // Refused while a file is being written there.
        const auto lockUp = [&] {
            return ::mount("tmpfs", out.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
        };
        expectFailuresAfter(lockUp, "Read-only file system");
    });
}

TEST_F(RunnerDisk, ADestinationThatVanishesFailsThePicturesAfterThat) {
    const std::string elsewhere = scratch / "elsewhere";
    const auto vanish = [&] { return ::rename(out.c_str(), elsewhere.c_str()) == 0; };
    expectFailuresAfter(vanish, "No such file or directory");
    const std::string whole = bitmapOf(large);
    for (const auto& file : fs::directory_iterator(elsewhere))
        EXPECT_EQ(readFile(file.path()), whole) << file.path();
    EXPECT_FALSE(fs::exists(out));
}

TEST_F(RunnerDisk, AFolderUnderAnOutputsNameStays) {
    fs::create_directory(out + "/Sample1.bmp");
    EXPECT_EQ(runReported({"--overwrite", small, small}).status, 1);
    expectFailed(1, "it is a folder");
    expectSaved(2, small);
    EXPECT_TRUE(fs::is_directory(out + "/Sample1.bmp"));
}

TEST_F(RunnerDisk, APipeUnderAnOutputsNameStays) {
    ASSERT_EQ(::mkfifo((out + "/Sample1.bmp").c_str(), 0600), 0);
    EXPECT_EQ(runReported({"--overwrite", small, small}).status, 1);
    expectFailed(1, "it is no file");
    expectSaved(2, small);
    EXPECT_TRUE(fs::is_fifo(out + "/Sample1.bmp"));
}

TEST_F(RunnerDisk, ATargetThatCannotBeReplacedStays) {
    onDisk("size=1m", [&] {
        writeFile(out + "/Sample1.bmp", "older");
        writeFile(out + "/other", "other's");
        ASSERT_EQ(::mount((out + "/other").c_str(), (out + "/Sample1.bmp").c_str(), nullptr,
                          MS_BIND, nullptr),
                  0);
        EXPECT_EQ(runReported({"--overwrite", small, small}).status, 1);
        expectFailed(1, "busy");
        expectSaved(2, small);
        EXPECT_EQ(readFile(out + "/Sample1.bmp"), "other's");
        EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "other"}));
    });
}

TEST_F(RunnerDisk, ALimitOnTheSizeOfFilesCostsThePicturesBeyondIt) {
    // The limit holds for the memory as well in which pictures are passed on, 4 bytes for each
    // pixel. The bytes of a bright picture that never repeat take two each in a PCX file, 6 in all.
    const std::string bright = picture("bright.ppm", drawBuffer(200, 150, [](int32_t x, int32_t y) {
                                           const auto level =
                                               static_cast<uint8_t>(192 + (x + y) % 64);
                                           return Pixel{level, level, level, 0};
                                       }));
    const std::vector<std::string> words{
        "--to",    out,   "--format", "pcx", "--report", scratch / "report",
        "--quiet", small, bright,     small};
    const Finished end = runThroughShell("exec prlimit --fsize=150000 \"$@\"", words);
    EXPECT_EQ(end.status, 1) << end.err;
    EXPECT_EQ(entry(1).at("status"), "saved");
    EXPECT_EQ(entry(2).at("error"), "cannot-write");
    EXPECT_EQ(entry(2).at("message"),
              "cannot write the file " + out + "/Sample2.pcx: File too large");
    EXPECT_EQ(entry(3).at("status"), "saved");
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.pcx", "Sample3.pcx"}));
}

}  // namespace
}  // namespace tessarine::tests
