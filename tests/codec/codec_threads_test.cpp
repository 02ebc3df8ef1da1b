#include <atomic>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "codec_fixture.h"
#include "imagefiles/codec/helper_starter.h"
#include "pixels/failures.h"
#include "support/children.h"
#include "support/pictures.h"

// Helpers and the threads of those who use them.

namespace tessarine::tests {
namespace {

class CodecThreads : public CodecFilesTest {
  protected:
    CodecThreads() { writePixmap(good, randomBuffer(30, 20, 1)); }
    CodecFiles::Options real() const {
        CodecFiles::Options options;
        options.program = TESSARINE_CODEC;
        return options;
    }
    void readOnAThread(CodecFiles& files) const {
        std::thread([&] { EXPECT_TRUE(files.read(good, "ppm").bitmap.has_value()); }).join();
    }

    const std::string good = scratch / "good.ppm";
};

TEST_F(CodecThreads, AHelperOutlivesTheThreadThatNeededItFirst) {
    CodecFiles::Options options = real();
    options.startsEarly = false;
    CodecFiles files(options);
    readOnAThread(files);
    const std::vector<pid_t> first = children();
    ASSERT_EQ(first.size(), 1U);
    for (int i = 0; i < 5; ++i)
        readOnAThread(files);
    EXPECT_EQ(children(), first);
}

TEST_F(CodecThreads, AsManyHelpersAsAreToBePreparedForAreStartedAndKept) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(with(helpers));
    files.prepareFor(3);
    std::atomic<int> begun = 0;
    std::vector<std::thread> threads;
    for (int round = 0; round < 2; ++round) {
        begun = 0;
        for (int i = 0; i < 3; ++i)
            threads.emplace_back([&] {
                ++begun;
                while (begun < 3)
                    std::this_thread::yield();
                for (int k = 0; k < 10; ++k)
                    expectGood(files.read(picture, "png"));
            });
        for (std::thread& thread : threads)
            thread.join();
        threads.clear();
    }
    EXPECT_EQ(helpers.kinds.size(), 3U);
}

TEST(HelperStarter, StartsAllHelpersOnOneThreadThatIsNotTheCallers) {
    std::vector<std::thread::id> starters;
    HelperStarter starter([&](HelperKind) {
        starters.push_back(std::this_thread::get_id());
        return std::make_unique<ScriptedHelper>(serveAll);
    });
    starter.start(HelperKind::files).get();
    std::thread([&] { starter.start(HelperKind::drawing).get(); }).join();
    ASSERT_EQ(starters.size(), 2U);
    EXPECT_EQ(starters[0], starters[1]);
    EXPECT_NE(starters[0], std::this_thread::get_id());
}

TEST(HelperStarter, AFailureReachesTheOneWhoAsked) {
    HelperStarter starter(
        [](HelperKind) -> std::unique_ptr<Helper> { throw StatementFailed("none today"); });
    HelperStarter::Coming coming = starter.start(HelperKind::files);
    EXPECT_THROW(coming.get(), StatementFailed);
}

}  // namespace
}  // namespace tessarine::tests
