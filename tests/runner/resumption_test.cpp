#include <chrono>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>

#include "batch/run_report.h"
#include "runner/refusal.h"
#include "runner/resume.h"
#include "support/paths.h"
#include "support/program.h"

// What the journal is told of pictures whose files change under way.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using State = JournalEntry::State;
using Status = PictureReport::Status;
using testing::ElementsAre;

class ResumptionTest : public testing::Test {
  protected:
    ResumptionTest() {
        writeFile(input, "the picture");
        batch.cboFormat.index = 8;
        order.tasks = {{1, input, output}};
    }
    /// A picture from its beginning to its end. \param meanwhile  happens while it is processed
    void process(Status status, const std::function<void()>& meanwhile) {
        RunOrder own = order;
        const Resumption resumption(journal, Journal::Use::append, batch, own);
        ASSERT_EQ(own.tasks[0].earlier, expected);
        own.onBegin(0);
        meanwhile();
        PictureReport entry;
        entry.status = status;
        entry.bytes = fs::exists(output) ? static_cast<int64_t>(fs::file_size(output)) : 0;
        own.onEnd(0, entry);
        EXPECT_TRUE(resumption.isWhole());
    }
    std::vector<State> states() const {
        std::vector<State> all;
        Journal(journal, Journal::Use::look).read([&](const JournalEntry& entry) {
            EXPECT_EQ(entry.output, fs::canonical(folder.path()).native() + "/out.bmp");
            all.push_back(entry.state);
        });
        return all;
    }
    Earlier judged() {
        RunOrder own = order;
        const Resumption resumption(journal, Journal::Use::look, batch, own);
        EXPECT_FALSE(own.onBegin || own.onEnd) << "a look tells nothing";
        return own.tasks[0].earlier;
    }

    const ScratchFolder folder;
    const std::string input = folder / "in.ppm";
    const std::string output = folder / "out.bmp";
    const std::string journal = folder / "journal";
    SilentPlatform platform;
    cBatch batch{platform};
    RunOrder order;
    Earlier expected = Earlier::nothing;
};

TEST_F(ResumptionTest, APictureIsToldAtItsBeginningAndItsEnd) {
    process(Status::saved, [&] {
        EXPECT_THAT(states(), ElementsAre(State::begun));
        writeFile(output, "made");
        EXPECT_EQ(judged(), Earlier::stale) << "as if the program were killed now";
    });
    EXPECT_THAT(states(), ElementsAre(State::begun, State::done));
    EXPECT_EQ(judged(), Earlier::upToDate);
    batch.sbDegrees = 5;
    EXPECT_EQ(judged(), Earlier::stale);
}

TEST_F(ResumptionTest, ASourceThatChangesUnderWayIsDoneAgain) {
    process(Status::saved, [&] {
        writeFile(output, "made");
        writeFile(input, "another picture");
    });
    EXPECT_THAT(states(), ElementsAre(State::begun));
    EXPECT_EQ(judged(), Earlier::stale);
    expected = Earlier::stale;
    process(Status::saved, [&] {
        writeFile(output, "made anew");
        fs::remove(input);
    });
    EXPECT_EQ(judged(), Earlier::stale);
}

TEST_F(ResumptionTest, ASettledSourceThatChangesUnderWayIsDoneAgainEvenWithItsOldTime) {
    const fs::file_time_type time = fs::last_write_time(input);
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    process(Status::saved, [&] {
        writeFile(output, "made");
        writeFile(input, "the PICTURE");
        fs::last_write_time(input, time);
    });
    EXPECT_EQ(judged(), Earlier::stale);
}

TEST_F(ResumptionTest, AnOutputThatIsNotAsItWasWrittenIsMadeAgain) {
    RunOrder own = order;
    const Resumption resumption(journal, Journal::Use::append, batch, own);
    own.onBegin(0);
    writeFile(output, "made");
    PictureReport entry;
    entry.status = Status::saved;
    entry.bytes = 400;
    own.onEnd(0, entry);
    EXPECT_EQ(judged(), Earlier::stale);
}

TEST_F(ResumptionTest, WhatWasNotMadeIsNotClaimed) {
    for (const Status status : {Status::failed, Status::kept}) {
        process(status, [&] {
            if (status == Status::kept) writeFile(output, "somebody's");
        });
        EXPECT_EQ(states().back(), State::left);
        EXPECT_EQ(judged(), Earlier::nothing);
    }
    // With leave to overwrite it, what stands there is not claimed before it is replaced.
    order.onExists = OnExists::overwrite;
    const size_t before = states().size();
    process(Status::saved, [&] {
        EXPECT_EQ(states().size(), before);
        writeFile(output, "replaced");
    });
    EXPECT_EQ(judged(), Earlier::upToDate);
}

TEST_F(ResumptionTest, AnOwnOutputIsToldAgainBeforeItIsReplaced) {
    process(Status::saved, [&] { writeFile(output, "made"); });
    batch.sbDegrees = 5;
    expected = Earlier::stale;
    process(Status::saved, [&] {
        EXPECT_THAT(states(), ElementsAre(State::begun, State::done, State::begun));
        batch.sbDegrees = 0;
        EXPECT_EQ(judged(), Earlier::stale) << "as if the program were killed now";
        batch.sbDegrees = 5;
        writeFile(output, "made anew");
    });
    EXPECT_EQ(judged(), Earlier::upToDate);
    // What was not replaced after all is an own output still.
    batch.sbDegrees = 6;
    process(Status::failed, [] {});
    EXPECT_EQ(states().back(), State::begun);
    EXPECT_EQ(judged(), Earlier::stale);
    EXPECT_EQ(readFile(output), "made anew");
}

TEST_F(ResumptionTest, WhatOneOfTwoRunsMadeIsKnownThoughTheOtherLeavesIt) {
    RunOrder first = order;
    RunOrder second = order;
    const Resumption one(journal, Journal::Use::append, batch, first);
    const Resumption other(journal, Journal::Use::append, batch, second);
    first.onBegin(0);
    second.onBegin(0);
    writeFile(output, "made");
    PictureReport entry;
    entry.status = Status::saved;
    entry.bytes = 4;
    first.onEnd(0, entry);
    entry.status = Status::kept;
    second.onEnd(0, entry);
    EXPECT_THAT(states(), ElementsAre(State::begun, State::begun, State::done, State::left));
    EXPECT_EQ(judged(), Earlier::upToDate);
    batch.sbDegrees = 5;
    EXPECT_EQ(judged(), Earlier::stale);
}

TEST_F(ResumptionTest, WhatWasMadeIsKnownThoughTheOthersLinesAllComeBehindIt) {
    process(Status::saved, [&] { writeFile(output, "made"); });
    // It saw nothing there, and told so when the first had come to its end.
    JournalEntry late;
    late.output = fs::canonical(folder.path()).native() + "/out.bmp";
    for (const State state : {State::begun, State::left}) {
        late.state = state;
        Journal(journal, Journal::Use::append).append(late);
    }
    EXPECT_EQ(judged(), Earlier::upToDate);
    batch.sbDegrees = 5;
    EXPECT_EQ(judged(), Earlier::stale);
    // Another file there is whose it may be.
    writeFile(output, "somebody's");
    EXPECT_EQ(judged(), Earlier::nothing);
}

TEST_F(ResumptionTest, AnEndWithoutABeginningIsNotTold) {
    RunOrder own = order;
    const Resumption resumption(journal, Journal::Use::append, batch, own);
    PictureReport entry;
    entry.status = Status::saved;
    own.onEnd(0, entry);
    EXPECT_THAT(states(), ElementsAre());
}

TEST_F(ResumptionTest, AnOutputIsKnownByWhateverPathLeadsToIt) {
    process(Status::saved, [&] { writeFile(output, "made"); });
    fs::create_directory(folder / "sub");
    fs::create_directory_symlink(folder.path(), folder / "sub/door");
    for (const std::string& path : {folder / "sub/../out.bmp", folder / "sub/door/out.bmp"}) {
        order.tasks[0].output = path;
        EXPECT_EQ(judged(), Earlier::upToDate) << path;
    }
    order.tasks[0].output = folder / "sub/out.bmp";
    EXPECT_EQ(judged(), Earlier::nothing);
}

}  // namespace
}  // namespace tessarine::tests
