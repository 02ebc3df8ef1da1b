#include <csignal>
#include <fstream>
#include <sys/prctl.h>
#include <thread>

#include <gtest/gtest.h>

#include "driven_helper.h"
#include "imagefiles/worker/build.h"
#include "support/files.h"
#include "support/misbehaviour.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"

namespace tessarine::tests {
namespace {

using namespace std::chrono_literals;

TEST(TheEndOfAHelper, ComesWithTheEndOfItsSocket) {
    DrivenHelper helper;
    ASSERT_TRUE(helper.ready);
    helper.closeSocket();
    EXPECT_EQ(helper.end(5s), helperDone);
}

TEST(TheEndOfAHelper, ComesAtOnceWhereItIsNotStartedAsItHasToBe) {
    const ScratchFolder folder;
    const std::string parent = std::to_string(getpid());
    const std::vector<std::vector<std::string>> wrong{
        {},
        {"3"},
        {"3", "files"},
        {"3", "nonsense", parent},
        {"x", "files", parent},
        {"2", "files", parent},
        {"-1", "files", parent},
        {"3", "files", parent, "more"},
    };
    for (std::vector<std::string> words : wrong) {
        words.insert(words.begin(), TESSARINE_CODEC);
        EXPECT_EQ(runProgram(words, folder.path()).status, helperMisused);
    }
    // Another parent than it was told of: that one is gone.
    EXPECT_EQ(runProgram({TESSARINE_CODEC, "3", "files", "1"}, folder.path()).status, helperDone);
}

TEST(TheEndOfAHelper, IsNotBroughtAboutByTheKeysOfATerminal) {
    const ScratchFolder folder;
    const std::string path = folder / "picture.ppm";
    writePixmap(path, randomBuffer(20, 10, 3));
    DrivenHelper helper;
    ASSERT_TRUE(helper.ready);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        ::kill(helper.process(), signal);
        EXPECT_TRUE(helper.read(path, "ppm").picture) << signal;
    }
    // The key that stops a program stops nothing in a group that nobody could set going again, as
    // this test's may be: so the list of what is ignored is looked at.
    const std::string status = readFile("/proc/" + std::to_string(helper.process()) + "/status");
    const size_t place = status.find("SigIgn:");
    ASSERT_NE(place, std::string::npos);
    const uint64_t ignored = std::stoull(status.substr(place + 7), nullptr, 16);
    EXPECT_NE(ignored >> (SIGTSTP - 1) & 1, 0u);
}

/// Whether a process is there, and no corpse.
bool lives(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    const size_t end = text.rfind(") ");
    return end != std::string::npos && text[end + 2] != 'Z';
}

/// Starts a helper in a process between, has that killed, and waits for the helper's end.
void expectDeathWithParent(bool isHanging) {
    int pipes[2];
    ASSERT_EQ(pipe2(pipes, O_CLOEXEC), 0);
    const pid_t between = fork();
    if (between == 0) {
        const ScratchFolder folder;
        DrivenHelper helper(TESSARINE_CODEC_MISBEHAVING);
        Descriptor file;
        if (isHanging) {
            writeAll(folder / "words.jpg", misbehavingFile("hang"));
            file = Descriptor(open((folder / "words.jpg").c_str(), O_RDONLY | O_CLOEXEC));
            helper.send(ReadRequest{1, 0, uint64_t{1} << 30, 0, "jpg"}, {file.get()});
            std::this_thread::sleep_for(200ms);
            std::filesystem::remove_all(folder.path());
        }
        // A copy of the socket elsewhere must not keep the helper: the test's process holds none,
        // so that only the death of this one can end it.
        const pid_t process = helper.ready ? helper.process() : 0;
        static_cast<void>(!::write(pipes[1], &process, sizeof process));
        for (;;)
            pause();
    }
    pid_t helper = 0;
    ASSERT_EQ(::read(pipes[0], &helper, sizeof helper), static_cast<ssize_t>(sizeof helper));
    close(pipes[0]);
    close(pipes[1]);
    ASSERT_GT(helper, 0);
    EXPECT_TRUE(lives(helper));
    ::kill(between, SIGKILL);
    waitpid(between, nullptr, 0);
    const auto deadline = Clock::now() + 1s;
    while (lives(helper) && Clock::now() < deadline)
        std::this_thread::sleep_for(5ms);
    EXPECT_FALSE(lives(helper));
}

TEST(TheEndOfAHelper, ComesWithItsParents) { expectDeathWithParent(false); }

TEST(TheEndOfAHelper, ComesWithItsParentsWhileItHangs) { expectDeathWithParent(true); }

TEST(TheEndOfAHelper, ComesBetweenTwoPicturesWhenDecodersHaveLostMuchMemory) {
    if (isSanitized) GTEST_SKIP() << "sanitizers bring a heap of their own";
    const ScratchFolder folder;
    const std::string path = folder / "words.jpg";
    writeAll(path, misbehavingFile("leak"));
    DrivenHelper helper(TESSARINE_CODEC_MISBEHAVING);
    int served = 0;
    while (helper.read(path, "jpg").done)
        ASSERT_LT(++served, 10);
    EXPECT_EQ(served, 2);
    EXPECT_EQ(helper.end(), helperRenews);
}

TEST(TheEndOfAHelper, ComesAfterManyPictures) {
    const ScratchFolder folder;
    const std::string path = folder / "picture.ppm";
    writePixmap(path, randomBuffer(2, 2, 3));
    DrivenHelper helper;
    const uint32_t most = Service{}.mostRequests;
    for (uint32_t served = 0; served < most; ++served)
        ASSERT_TRUE(helper.read(path, "ppm").done) << served;
    EXPECT_FALSE(helper.read(path, "ppm").done);
    EXPECT_EQ(helper.end(), helperRenews);
}

/// What a helper does that was made to misbehave.
struct Misbehaved {
    HelperRead result;
    std::optional<int> end;
};

Misbehaved misbehaving(const std::string& word) {
    const ScratchFolder folder;
    const std::string path = folder / "words.gif";
    writeAll(path, misbehavingFile(word));
    DrivenHelper helper(TESSARINE_CODEC_MISBEHAVING);
    Misbehaved misbehaved;
    misbehaved.result = helper.read(path, "gif");
    misbehaved.end = helper.end(500ms);
    return misbehaved;
}

TEST(AMisbehavingHelper, EndsAsTold) {
    EXPECT_EQ(misbehaving("crash").end, -SIGSEGV);
    EXPECT_EQ(misbehaving("abort").end, -SIGABRT);
    EXPECT_EQ(misbehaving("exit").end, 7);
    const Misbehaved closed = misbehaving("silent-close");
    EXPECT_FALSE(closed.result.done);
    EXPECT_EQ(closed.end, std::nullopt);
}

TEST(AMisbehavingHelper, LiesAsTold) {
    EXPECT_EQ(misbehaving("lie-number").result.done->number, 2u);
    EXPECT_EQ(misbehaving("flood").result.done->number, 1u);
    const Misbehaved early = misbehaving("lie-early");
    EXPECT_EQ(early.result.blocksAsked, 0);
    EXPECT_EQ(early.result.done->error, FileError::none);
    const Misbehaved size = misbehaving("lie-size");
    EXPECT_EQ(size.result.blocksAsked, 1);
    EXPECT_EQ(size.result.done->width, 640);
    const Misbehaved block = misbehaving("lie-block");
    EXPECT_EQ(block.result.blocksAsked, 1);
    EXPECT_EQ(block.result.done->blockId, 8u);
}

TEST(AMisbehavingHelper, MisbehavesOverAPictureToBeWrittenToo) {
    DrivenHelper helper(TESSARINE_CODEC_MISBEHAVING);
    const Descriptor output = unnamedFile();
    const auto good = helper.write(PixelBuffer(16, 16), "bmp", 8, output.get(), {});
    ASSERT_TRUE(good);
    EXPECT_EQ(good->error, FileError::none);
    EXPECT_FALSE(helper.write(misbehavingPicture("abort"), "bmp", 8, output.get(), {}));
    EXPECT_EQ(helper.end(), -SIGABRT);
}

TEST(AMisbehavingHelper, IsNotTheOrdinaryOne) {
    const ScratchFolder folder;
    const std::string path = folder / "words.gif";
    writeAll(path, misbehavingFile("crash"));
    DrivenHelper helper;
    const HelperRead result = helper.read(path, "gif");
    ASSERT_TRUE(result.done);
    EXPECT_EQ(errorClass(result.done->error), "unreadable");
    EXPECT_EQ(readAll(TESSARINE_CODEC).find("tessarine-misbehave"), std::string::npos);
}

}  // namespace
}  // namespace tessarine::tests
