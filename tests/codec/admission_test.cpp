#include "imagefiles/codec/admission.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "codec_fixture.h"
#include "support/pictures.h"

// How many pictures are in memory at a time.

namespace tessarine::tests {
namespace {

using namespace std::chrono_literals;

using Place = Admission::Place;

TEST(Admission, PicturesThatFitBesideEachOtherComeInAtOnce) {
    Admission admission(100);
    Place a(admission);
    Place b(admission);
    EXPECT_TRUE(a.admit(60));
    EXPECT_TRUE(b.admit(40));
    EXPECT_EQ(admission.taken(), 100U);
    a.leave();
    EXPECT_EQ(admission.taken(), 40U);
}

TEST(Admission, APictureAloneComesInWhateverItTakes) {
    Admission admission(100);
    Place a(admission);
    EXPECT_TRUE(a.admit(100000));
}

TEST(Admission, WhatDoesNotFitWaitsForAnEndAndThoseBehindItWaitToo) {
    Admission admission(100);
    auto first = std::make_unique<Place>(admission);
    ASSERT_TRUE(first->admit(50));
    std::mutex guard;
    std::vector<std::string> order;
    const auto enter = [&](const char* name, uint64_t bytes) {
        Place place(admission);
        EXPECT_TRUE(place.admit(bytes));
        const std::lock_guard lock(guard);
        order.emplace_back(name);
    };
    std::thread huge(enter, "huge", 5000);
    std::this_thread::sleep_for(50ms);
    std::thread small(enter, "small", 10);
    std::this_thread::sleep_for(50ms);
    {
        const std::lock_guard lock(guard);
        EXPECT_TRUE(order.empty());
    }
    first.reset();
    huge.join();
    small.join();
    EXPECT_EQ(order, (std::vector<std::string>{"huge", "small"}));
    EXPECT_EQ(admission.taken(), 0U);
}

TEST(Admission, OneThatIsInDoesNotWaitForMore) {
    Admission admission(100);
    Place a(admission);
    Place b(admission);
    ASSERT_TRUE(a.admit(50));
    ASSERT_TRUE(b.admit(50));
    EXPECT_TRUE(a.admit(500));
    EXPECT_EQ(admission.taken(), 550U);
    EXPECT_TRUE(a.admit(10)) << "it has as much already";
    EXPECT_EQ(admission.taken(), 550U);
}

TEST(Admission, OneThatIsNotWantedAnyMoreLeavesTheQueue) {
    Admission admission(100);
    Place a(admission);
    ASSERT_TRUE(a.admit(100));
    Place b(admission);
    EXPECT_FALSE(b.admit(50, [] { return true; }));
    a.leave();
    Place c(admission);
    EXPECT_TRUE(c.admit(50));
}

TEST(Admission, OfManyThreadsNoneStaysOutside) {
    Admission admission(100);
    std::atomic<uint64_t> inside = 0;
    std::atomic<bool> tooMany = false;
    std::vector<std::thread> threads;
    for (uint64_t i = 0; i < 8; ++i)
        threads.emplace_back([&, i] {
            for (uint64_t k = 0; k < 50; ++k) {
                const uint64_t bytes = (i * 37 + k * 11) % 90 + 1;
                Place place(admission);
                EXPECT_TRUE(place.admit(bytes));
                if ((inside += bytes) > 100) tooMany = true;
                inside -= bytes;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(tooMany);
    EXPECT_EQ(admission.taken(), 0U);
}

/// Helpers, and memory for one of their pictures at a time.
class AdmissionOfFiles : public CodecFilesTest {
  protected:
    static constexpr uint64_t room = uint64_t{side} * side * 30;

    CodecFiles::Options tight(ScriptedHelpers& helpers) const {
        CodecFiles::Options options = with(helpers);
        options.budget = room;
        return options;
    }
};

TEST_F(AdmissionOfFiles, TwoLargePicturesAreNeverInMemoryTogetherAndAllAreRead) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(tight(helpers));
    files.prepareFor(4);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int k = 0; k < 5; ++k) {
                const std::unique_ptr<PictureFiles> one = files.onePicture();
                expectGood(one->read(picture, "png"));
                if (++inside > 1) most = 2;
                std::this_thread::sleep_for(2ms);
                --inside;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(most, 0);
}

TEST_F(AdmissionOfFiles, APictureWaitsForTheEndOfTheOneBeforeItAndItsTimeStands) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles::Options options = tight(helpers);
    options.wishes.seconds = 0.3;
    CodecFiles files(options);
    files.prepareFor(2);
    std::unique_ptr<PictureFiles> first = files.onePicture();
    expectGood(first->read(picture, "png"));
    std::atomic<bool> done = false;
    std::thread second([&] {
        expectGood(files.onePicture()->read(picture, "png"));
        done = true;
    });
    std::this_thread::sleep_for(900ms);
    EXPECT_FALSE(done);
    first.reset();
    second.join();
    EXPECT_TRUE(done);
}

TEST_F(AdmissionOfFiles, ARealHelpersClockStandsMeanwhileToo) {
    const std::string good = scratch / "good.ppm";
    writePixmap(good, randomBuffer(300, 200, 1));
    CodecFiles::Options options;
    options.program = TESSARINE_CODEC;
    options.budget = 1000;
    options.wishes.seconds = 0.5;
    CodecFiles files(options);
    files.prepareFor(2);
    std::unique_ptr<PictureFiles> first = files.onePicture();
    EXPECT_TRUE(first->read(good, "ppm").bitmap.has_value());
    std::thread second([&] {
        const ReadOutcome outcome = files.onePicture()->read(good, "ppm");
        EXPECT_TRUE(outcome.bitmap.has_value()) << outcome.message;
    });
    std::this_thread::sleep_for(1200ms);
    first.reset();
    second.join();
}

TEST_F(AdmissionOfFiles, APictureThatIsAloneIsReadWhateverTheBudget) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles::Options options = with(helpers);
    options.budget = 1;
    CodecFiles files(options);
    for (int i = 0; i < 3; ++i)
        expectGood(files.onePicture()->read(picture, "png"));
    expectGood(files.read(picture, "png"));
}

TEST_F(AdmissionOfFiles, WhatIsReadForItselfDoesNotWait) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(tight(helpers));
    const std::unique_ptr<PictureFiles> first = files.onePicture();
    expectGood(first->read(picture, "png"));
    expectGood(files.read(picture, "png"));
}

}  // namespace
}  // namespace tessarine::tests
