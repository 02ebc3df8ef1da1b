#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>

#include "batch/batch.h"
#include "batch/functions.h"
#include "batch/texts.h"
#include "imagefiles/codec/codec_files.h"
#include "support/misbehaviour.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"
#include "support/recorder.h"

// The run of pictures by themselves with several of them in flight.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Status = PictureReport::Status;

constexpr int32_t bmpRow = 8;

/// This process's own reading and writing, with something before it.
class WithBefore : public PictureFiles {
  public:
    std::function<void(const std::string& path)> beforeReading;
    std::function<void()> beforeWriting;

    ReadOutcome read(const std::string& path, const std::string& extension) override {
        if (beforeReading) beforeReading(path);
        return localFiles().read(path, extension);
    }
    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file) override {
        if (beforeWriting) beforeWriting();
        return localFiles().write(picture, extension, formatIndex, file);
    }
};

class Jobs : public testing::Test {
  protected:
    Jobs() { fs::create_directory(scratch / "in"); }

    std::string good(const std::string& name, uint32_t seed, int32_t width = 31) const {
        const std::string path = scratch / ("in/" + name);
        writePixmap(path, randomBuffer(width, 17, seed));
        return path;
    }
    std::string other(const std::string& name, const std::string& bytes) const {
        const std::string path = scratch / ("in/" + name);
        writeFile(path, bytes);
        return path;
    }
    std::vector<std::string> goods(uint32_t count) const {
        std::vector<std::string> paths;
        for (uint32_t i = 1; i <= count; ++i)
            paths.push_back(good("good" + std::to_string(i) + ".ppm", i));
        return paths;
    }
    std::string folder(const std::string& name) const {
        fs::create_directories(scratch / name);
        return scratch / name;
    }
    void prepare(cBatch& batch, const std::string& name, const std::vector<std::string>& paths,
                 int32_t jobs) const {
        batch.txtDestination = folder(name);
        batch.txtName = "Sample";
        batch.cboFormat.index = bmpRow;
        batch.jobs = jobs;
        for (const std::string& path : paths)
            batch.lvSelected.push_back({fileNameOf(path), extensionOf(path), path, folderOf(path)});
    }
    static void add(cBatch& batch, const char* name) {
        const FunctionDef* function = findFunction(name);
        ASSERT_NE(function, nullptr) << name;
        batch.SelectNode(function->treeIndex);
        batch.AddFunction(name);
    }
    std::map<std::string, std::string> outputs(const std::string& name) const {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::directory_iterator(scratch / name))
            all[entry.path().filename().string()] = readFile(entry.path().string());
        return all;
    }
    /// All that a report says but for times and the folder of the outputs.
    static std::vector<std::string> told(const cBatch& batch) {
        std::vector<std::string> all;
        for (const PictureReport& entry : batch.report.entries())
            all.push_back(std::to_string(entry.number) + " " + entry.input + " " +
                          fileNameOf(entry.output) + " " + statusText(entry.status) + " " +
                          entry.error + " " + std::to_string(entry.width) + "x" +
                          std::to_string(entry.height) + "x" + std::to_string(entry.depth) + " " +
                          std::to_string(entry.bytes));
        return all;
    }

    const ScratchFolder scratch;
    Recorder platform;
};

TEST_F(Jobs, OutputsAndReportAreTheSameForAnyNumberOfThem) {
    CodecFiles::Options options;
    options.program = TESSARINE_CODEC_MISBEHAVING;
    options.wishes = {1.0, uint64_t{256} << 20};
    CodecFiles files(options);
    std::vector<std::string> paths = goods(6);
    paths.insert(paths.begin() + 1, {other("crash.ppm", misbehavingFile("crash")), paths[0],
                                     other("bad.png", "no picture"), scratch / "in/none.jpg"});
    paths.insert(paths.end(),
                 {other("hang.ppm", misbehavingFile("hang")), paths[0], good("wide.ppm", 9, 300),
                  other("lie.ppm", misbehavingFile("lie-size"))});
    std::map<std::string, std::string> expected;
    std::vector<std::string> expectedTold;
    for (const int32_t jobs : {1, 2, 5}) {
        cBatch batch(platform, files);
        const std::string name = "out" + std::to_string(jobs);
        prepare(batch, name, paths, jobs);
        for (const char* function : {"Noise", "Diffuse", "Rotate Intelligently"})
            add(batch, function);
        batch.sbDegrees = 30;
        // One output is there already, and one has a folder in its way.
        writeFile(folder(name) + "/Sample6.bmp", "older");
        fs::create_directory(folder(name) + "/Sample7.bmp");
        batch.BatchEach();
        fs::remove(folder(name) + "/Sample7.bmp");
        if (jobs == 1) {
            expected = outputs(name);
            expectedTold = told(batch);
            EXPECT_EQ(expected.size(), 8U);
            EXPECT_EQ(expectedTold.size(), paths.size());
        }
        EXPECT_TRUE(outputs(name) == expected) << jobs;
        EXPECT_EQ(told(batch), expectedTold) << jobs;
    }
}

TEST_F(Jobs, EveryFunctionHasThePixelsOfTheWindowsRun) {
    const std::vector<std::string> paths = goods(3);
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0) continue;
        const auto prepared = [&](cBatch& batch, const std::string& name) {
            prepare(batch, name, paths, 3);
            batch.chkOverwrite = 1;
            batch.SelectNode(function.treeIndex);
            batch.ChangeInvert(1, 1);
            batch.ChangeKill(2, 1);
            batch.ChangeDegrees(25);
            if (function.picksPoint) batch.PickPoint(60, 50);
            batch.AddFunction(std::string(function.name));
            batch.cFilter.random = RandomGenerator();
        };
        cBatch each(platform);
        prepared(each, "each");
        each.BatchEach();
        cBatch window(platform);
        prepared(window, "window");
        window.CmdBatchAll();
        const auto expected = outputs("window");
        for (const auto& [name, bytes] : outputs("each")) {
            // Random numbers start anew for each picture, with those of a new program for the
            // first.
            if ((function.name == "Noise" || function.name == "Diffuse") && name != "Sample1.bmp")
                continue;
            EXPECT_TRUE(expected.at(name) == bytes) << function.name << " " << name;
        }
    }
}

TEST_F(Jobs, EntriesComeInTheOrderOfTheBasketWhicheverPictureEndsFirst) {
    WithBefore files;
    std::atomic<int> written = 0;
    // The first picture waits until three others are written.
    files.beforeReading = [&](const std::string& path) {
        for (int i = 0; fileNameOf(path) == "good1.ppm" && written < 3 && i < 5000; ++i)
            std::this_thread::sleep_for(1ms);
    };
    files.beforeWriting = [&] { ++written; };
    cBatch batch(platform, files);
    prepare(batch, "out", goods(6), 2);
    std::vector<int32_t> numbers;
    std::vector<int> writtenAt;
    batch.report.onEntry = [&](const PictureReport& entry) {
        numbers.push_back(entry.number);
        writtenAt.push_back(written);
    };
    batch.BatchEach();
    EXPECT_EQ(numbers, (std::vector<int32_t>{1, 2, 3, 4, 5, 6}));
    ASSERT_FALSE(writtenAt.empty());
    EXPECT_GE(writtenAt[0], 3) << "the first entry waited for its picture";
}

TEST_F(Jobs, AllThatTheOwnerSeesHappensOnItsThread) {
    class Watching : public SilentPlatform {
      public:
        void giveWay() override { threads.insert(std::this_thread::get_id()); }
        void changed(std::string_view) override { threads.insert(std::this_thread::get_id()); }
        bool fileExists(const std::string& path) override {
            threads.insert(std::this_thread::get_id());
            return SilentPlatform::fileExists(path);
        }
        std::set<std::thread::id> threads;
    } watching;
    WithBefore files;
    std::mutex guard;
    std::set<std::thread::id> readers;
    files.beforeReading = [&](const std::string&) {
        const std::lock_guard lock(guard);
        readers.insert(std::this_thread::get_id());
    };
    cBatch batch(watching, files);
    prepare(batch, "out", goods(8), 3);
    add(batch, "Negative");
    batch.report.onEntry = [&](const PictureReport&) {
        watching.threads.insert(std::this_thread::get_id());
    };
    int reports = 0;
    batch.cFilter.Progress = [&](int32_t& percent) {
        watching.threads.insert(std::this_thread::get_id());
        EXPECT_EQ(percent, 100);
        ++reports;
    };
    batch.BatchEach();
    EXPECT_EQ(watching.threads, std::set<std::thread::id>{std::this_thread::get_id()});
    EXPECT_EQ(reports, 8);
    EXPECT_FALSE(readers.contains(std::this_thread::get_id()));
}

TEST_F(Jobs, NoMoreAreInFlightThanAskedFor) {
    WithBefore files;
    std::atomic<int> inFlight = 0;
    std::atomic<int> most = 0;
    files.beforeReading = [&](const std::string&) {
        const int now = ++inFlight;
        for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
        }
        std::this_thread::sleep_for(5ms);
    };
    files.beforeWriting = [&] { --inFlight; };
    cBatch batch(platform, files);
    prepare(batch, "out", goods(12), 3);
    batch.BatchEach();
    EXPECT_LE(most, 3);
    EXPECT_GT(most, 1);
    EXPECT_EQ(outputs("out").size(), 12U);
}

TEST_F(Jobs, AStopAdmitsNoMoreAndFinishesWhatIsUnderWay) {
    WithBefore files;
    std::atomic<size_t> begun = 0;
    files.beforeReading = [&](const std::string&) {
        ++begun;
        std::this_thread::sleep_for(2ms);
    };
    cBatch batch(platform, files);
    prepare(batch, "out", goods(20), 3);
    size_t begunAtStop = 0;
    batch.report.onEntry = [&](const PictureReport& entry) {
        if (entry.number != 4) return;
        begunAtStop = begun;
        batch.CmdStop();
    };
    batch.BatchEach();
    const auto& entries = batch.report.entries();
    ASSERT_GE(entries.size(), 4U);
    EXPECT_LE(entries.size(), begunAtStop + 3);
    EXPECT_LT(entries.size(), 20U);
    for (size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(entries[i].number, static_cast<int32_t>(i + 1));
        EXPECT_EQ(entries[i].status, Status::saved);
    }
    EXPECT_EQ(outputs("out").size(), entries.size());
    // The next run starts as ever.
    batch.report.onEntry = nullptr;
    batch.chkOverwrite = 1;
    batch.BatchEach();
    EXPECT_EQ(outputs("out").size(), 20U);
}

TEST_F(Jobs, AStopIsHeardWhileAllOfThemAreBusy) {
    WithBefore files;
    std::atomic<bool> stopped = false;
    files.beforeReading = [&](const std::string&) {
        for (int i = 0; !stopped && i < 5000; ++i)
            std::this_thread::sleep_for(1ms);
    };
    class StopsSoon : public SilentPlatform {
      public:
        void giveWay() override {
            if (++moments == 4) onFourth();
        }
        int moments = 0;
        std::function<void()> onFourth;
    } stopping;
    cBatch batch(stopping, files);
    prepare(batch, "out", goods(9), 2);
    stopping.onFourth = [&] {
        batch.CmdStop();
        stopped = true;
    };
    batch.BatchEach();
    EXPECT_EQ(batch.report.entries().size(), 2U);
}

TEST_F(Jobs, WhatIsThrownCostsItsPictureAlone) {
    for (const int32_t jobs : {1, 3}) {
        WithBefore files;
        files.beforeReading = [](const std::string& path) {
            if (fileNameOf(path) == "good2.ppm") throw std::runtime_error("out of order");
            if (fileNameOf(path) == "good3.ppm") throw std::bad_alloc();
        };
        cBatch batch(platform, files);
        prepare(batch, "out", goods(5), jobs);
        batch.chkOverwrite = 1;
        batch.BatchEach();
        const auto& entries = batch.report.entries();
        ASSERT_EQ(entries.size(), 5U);
        for (const size_t at : {0U, 3U, 4U})
            EXPECT_EQ(entries[at].status, Status::saved) << at;
        EXPECT_EQ(entries[1].status, Status::failed);
        EXPECT_THAT(entries[1].message, testing::HasSubstr("out of order"));
        EXPECT_EQ(entries[2].status, Status::failed);
        EXPECT_EQ(entries[2].error, "too-large");
        EXPECT_EQ(outputs("out").size(), 3U);
    }
}

TEST_F(Jobs, TheOwnersStateIsAsItWas) {
    cBatch batch(platform);
    prepare(batch, "out", goods(4), 2);
    add(batch, "Noise");
    const PixelBuffer bits = batch.workBits;
    const Bitmap source = batch.iSrc.drawn();
    const auto next = batch.cFilter.random;
    batch.BatchEach();
    EXPECT_EQ(batch.workBits, bits);
    EXPECT_EQ(batch.iSrc.drawn(), source);
    EXPECT_EQ(batch.cFilter.random.state(), next.state());
}

TEST_F(Jobs, PartsOfARunGiveWhatTheWholeGives) {
    CodecFiles::Options options;
    options.program = TESSARINE_CODEC;
    CodecFiles files(options);
    const std::vector<std::string> paths = goods(5);
    const auto runOf = [&](const std::string& name, const std::vector<size_t>& places) {
        cBatch batch(platform, files);
        prepare(batch, name, paths, 2);
        add(batch, "Noise");
        RunOrder order = batch.orderOfBasket();
        std::vector<PictureTask> chosen;
        for (const size_t place : places)
            chosen.push_back(order.tasks[place]);
        order.tasks = chosen;
        batch.BatchEach(order);
        return told(batch);
    };
    const std::vector<std::string> whole = runOf("whole", {0, 1, 2, 3, 4});
    EXPECT_THAT(runOf("parts", {4, 1}), testing::ElementsAre(whole[4], whole[1]));
    EXPECT_THAT(runOf("parts", {0, 2, 3}), testing::ElementsAre(whole[0], whole[2], whole[3]));
    EXPECT_TRUE(outputs("parts") == outputs("whole"));
}

TEST_F(Jobs, AnOutputThatExistsFailsThePictureWhereThatIsTheWish) {
    cBatch batch(platform);
    prepare(batch, "out", goods(3), 1);
    writeFile(scratch / "out/Sample2.bmp", "before");
    RunOrder order = batch.orderOfBasket();
    order.onExists = OnExists::fail;
    batch.BatchEach(order);
    const auto& entries = batch.report.entries();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].status, Status::saved);
    EXPECT_EQ(entries[1].status, Status::failed);
    EXPECT_EQ(entries[1].error, "exists");
    EXPECT_EQ(entries[2].status, Status::saved);
    EXPECT_EQ(readFile(scratch / "out/Sample2.bmp"), "before");
}

TEST_F(Jobs, WhatIsUpToDateIsNotBegunAndWhatIsStaleIsReplaced) {
    for (const OnExists wish : {OnExists::keep, OnExists::overwrite, OnExists::fail}) {
        cBatch batch(platform);
        prepare(batch, "out", goods(3), 2);
        for (const char* name : {"out/Sample1.bmp", "out/Sample2.bmp"})
            writeFile(scratch / name, "before");
        fs::remove(scratch / "out/Sample3.bmp");
        RunOrder order = batch.orderOfBasket();
        order.onExists = wish;
        order.tasks[0].earlier = Earlier::upToDate;
        order.tasks[1].earlier = Earlier::stale;
        std::set<size_t> begun;
        order.onBegin = [&](size_t place) { begun.insert(place); };
        batch.BatchEach(order);
        const auto& entries = batch.report.entries();
        ASSERT_EQ(entries.size(), 3U);
        EXPECT_EQ(entries[0].status, Status::kept);
        EXPECT_EQ(entries[0].message, "it is up to date");
        EXPECT_EQ(entries[1].status, Status::saved);
        EXPECT_EQ(entries[2].status, Status::saved);
        EXPECT_EQ(readFile(scratch / "out/Sample1.bmp"), "before");
        EXPECT_NE(readFile(scratch / "out/Sample2.bmp"), "before");
        EXPECT_EQ(begun, (std::set<size_t>{1, 2}));
    }
}

TEST_F(Jobs, EachEndIsHeardBeforeTheReportWhichKeepsToTheOrder) {
    cBatch batch(platform);
    std::vector<std::string> paths = goods(6);
    paths[0] = good("large.ppm", 9, 60000);
    prepare(batch, "out", paths, 3);
    add(batch, "Blur");
    RunOrder order = batch.orderOfBasket();
    std::vector<size_t> ends;
    std::vector<int32_t> told;
    order.onEnd = [&](size_t place, const PictureReport& entry) {
        EXPECT_EQ(entry.number, static_cast<int32_t>(place) + 1);
        EXPECT_TRUE(fs::exists(entry.output));
        EXPECT_LE(told.size(), ends.size());
        ends.push_back(place);
    };
    batch.report.onEntry = [&](const PictureReport& entry) { told.push_back(entry.number); };
    batch.BatchEach(order);
    EXPECT_EQ(told, (std::vector<int32_t>{1, 2, 3, 4, 5, 6}));
    ASSERT_EQ(ends.size(), 6U);
    EXPECT_NE(ends[0], 0U) << "the large picture held the others up";
}

TEST_F(Jobs, NoPictureIsBegunBehindAsManyFailuresAsAreBorne) {
    cBatch batch(platform);
    std::vector<std::string> paths = goods(2);
    for (const char* name : {"bad1.png", "bad2.png", "bad3.png"})
        paths.insert(paths.begin() + 1, other(name, "no picture"));
    prepare(batch, "out", paths, 1);
    RunOrder order = batch.orderOfBasket();
    order.mostFailures = 2;
    batch.BatchEach(order);
    EXPECT_EQ(batch.report.entries().size(), 3U);
    EXPECT_EQ(outputs("out").size(), 1U);
}

}  // namespace
}  // namespace tessarine::tests
