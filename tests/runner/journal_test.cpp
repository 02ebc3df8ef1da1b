#include "runner/journal.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "pixels/failures.h"
#include "runner/refusal.h"
#include "support/paths.h"
#include "support/program.h"

namespace tessarine::tests {
namespace {

using State = JournalEntry::State;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string header = "{\"tessarine-journal\":1}\n";

JournalEntry begun(const std::string& output) {
    JournalEntry entry;
    entry.state = State::begun;
    entry.output = output;
    return entry;
}

JournalEntry done(const std::string& output) {
    JournalEntry entry;
    entry.state = State::done;
    entry.output = output;
    entry.number = 7;
    entry.input = "/in/\xE9t\xE9.cut";
    entry.key = "0123";
    entry.sources = {SourceRecord{{1, uint64_t{1} << 63, 2, -3, 1795301905395561028}, "ab"},
                     std::nullopt, SourceRecord{{4, 5, 6, 7, 8}, "cd"}};
    entry.settled = true;
    entry.mark = {1000, 1795301905395561029, 1795301905395561030};
    return entry;
}

class JournalFile : public testing::Test {
  protected:
    std::vector<std::string> outputs(Journal::Use use = Journal::Use::look) const {
        std::vector<std::string> names;
        Journal(path, use).read([&](const JournalEntry& entry) { names.push_back(entry.output); });
        return names;
    }
    void append(const JournalEntry& entry) const {
        Journal journal(path, Journal::Use::append);
        journal.append(entry);
        EXPECT_TRUE(journal.isWhole());
    }
    /// Neither use takes the file, which stays as it is.
    void expectRefused(const std::string& bytes, const std::string& why) const {
        writeFile(path, bytes);
        for (const Journal::Use use : {Journal::Use::append, Journal::Use::look})
            try {
                static_cast<void>(outputs(use));
                ADD_FAILURE() << "taken: " << bytes;
            } catch (const Refusal& refusal) {
                EXPECT_EQ(refusal.status(), ExitStatus::nothingStarts);
                EXPECT_THAT(refusal.what(), HasSubstr(path));
                EXPECT_THAT(refusal.what(), HasSubstr(why));
            }
        EXPECT_EQ(readFile(path), bytes);
    }

    const ScratchFolder folder;
    const std::string path = folder / "journal";
};

TEST_F(JournalFile, GivesBackWhatItWasTold) {
    const JournalEntry told = done("/out/\xFF.bmp");
    append(told);
    append(begun("/out/b"));
    JournalEntry left;
    left.output = "/out/c";
    append(left);
    std::vector<JournalEntry> all;
    Journal(path, Journal::Use::look).read([&](JournalEntry entry) { all.push_back(entry); });
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].state, State::done);
    EXPECT_EQ(all[0].output, told.output);
    EXPECT_EQ(all[0].number, 7);
    EXPECT_EQ(all[0].input, told.input);
    EXPECT_EQ(all[0].key, "0123");
    EXPECT_TRUE(all[0].settled);
    EXPECT_EQ(all[0].mark, told.mark);
    ASSERT_EQ(all[0].sources.size(), 3U);
    EXPECT_FALSE(all[0].sources[1]);
    for (const size_t i : {0U, 2U}) {
        EXPECT_EQ(all[0].sources[i]->mark, told.sources[i]->mark);
        EXPECT_EQ(all[0].sources[i]->hash, told.sources[i]->hash);
    }
    EXPECT_EQ(all[1].state, State::begun);
    EXPECT_EQ(all[1].output, "/out/b");
    EXPECT_EQ(all[2].state, State::left);
    EXPECT_EQ(all[2].output, "/out/c");
    EXPECT_THAT(readFile(path), testing::StartsWith(header));
}

TEST_F(JournalFile, OfAVersionThatToldNoTimeOfChangeIsTaken) {
    std::string line = lineOf(done("/a"));
    const std::string changed = ",\"changed\":1795301905395561030}";
    ASSERT_THAT(line, testing::EndsWith(changed));
    line.replace(line.size() - changed.size(), changed.size(), "}");
    const std::optional<JournalEntry> entry = entryOfLine(line);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->mark.modified, 1795301905395561029);
    EXPECT_FALSE(entry->mark.changed);
    EXPECT_FALSE(entry->mark == done("/a").mark) << "such an output is made again";
}

TEST_F(JournalFile, IsPassedOverWhereALineIsCutAndGoesOnOnALineOfItsOwn) {
    append(done("/a"));
    append(done("/b"));
    const std::string whole = readFile(path);
    const size_t lastLine = whole.find("{\"done\":\"/b\"");
    for (size_t length = lastLine; length < whole.size(); ++length) {
        writeFile(path, whole.substr(0, length));
        append(begun("/c"));
        // The line without its end alone is whole.
        if (length == whole.size() - 1)
            EXPECT_THAT(outputs(), ElementsAre("/a", "/b", "/c"));
        else
            EXPECT_THAT(outputs(), ElementsAre("/a", "/c")) << length;
    }
}

TEST_F(JournalFile, MayBeCutInItsFirstLine) {
    for (size_t length = 0; length < header.size(); ++length) {
        writeFile(path, header.substr(0, length));
        EXPECT_THAT(outputs(), ElementsAre());
        append(begun("/a"));
        append(begun("/b"));
        EXPECT_THAT(outputs(), ElementsAre("/a", "/b")) << length;
    }
}

TEST_F(JournalFile, OfAnotherKindIsRefusedAndStaysAsItIs) {
    expectRefused("P6 1 1 255\nxxx", "it is no journal");
    expectRefused("\n" + header, "it is no journal");
    expectRefused("{\"number\":1}\n", "it is no journal");
    expectRefused("{\n{\"number\":1}\n", "it is no journal");
    expectRefused("{\"tessarine-journal\":2}\n", "it is no journal");
    expectRefused(header + lineOf(begun("/a")) + "\n{\"what\":1}\n", "line 3 is none of a journal");
    expectRefused(header + "17\n", "line 2 is none of a journal");
    expectRefused(header + "{\"done\":\"/a\",\"number\":1}\n", "line 2 is none of a journal");
}

TEST_F(JournalFile, ThatIsNoFileIsRefused) {
    const auto refused = [](const std::string& name) -> std::string {
        try {
            const Journal journal(name, Journal::Use::append);
            return "taken";
        } catch (const Refusal& refusal) {
            return refusal.what();
        }
    };
    EXPECT_THAT(refused(folder.path()), HasSubstr("no regular file"));
    EXPECT_THAT(refused("/dev/null"), HasSubstr("no regular file"));
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(refused(folder / "pipe"), HasSubstr("no regular file"));
    EXPECT_THAT(refused(folder / "none/journal"), HasSubstr("No such file"));
}

TEST_F(JournalFile, IsNotMadeByALook) {
    EXPECT_THAT(outputs(), ElementsAre());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(JournalFile, TakesTheLinesOfSeveralProcessesAtOnce) {
    constexpr int processes = 4;
    constexpr int lines = 300;
    for (int process = 0; process < processes; ++process)
        if (::fork() == 0) {
            Journal journal(path, Journal::Use::append);
            for (int i = 0; i < lines; ++i)
                journal.append(done(std::string(static_cast<size_t>(50 + process * 400), 'x')));
            ::_exit(journal.isWhole() ? 0 : 1);
        }
    for (int process = 0; process < processes; ++process) {
        int status = 0;
        ::wait(&status);
        EXPECT_EQ(status, 0);
    }
    std::map<size_t, int> counts;
    for (const std::string& output : outputs())
        ++counts[output.size()];
    ASSERT_EQ(counts.size(), static_cast<size_t>(processes));
    for (const auto& [length, count] : counts)
        EXPECT_EQ(count, lines) << length;
    const std::string bytes = readFile(path);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), processes * lines + 1);
}

TEST_F(JournalFile, TellsWhereTheDiskTakesNoMore) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        Journal journal(path, Journal::Use::append);
        journal.append(done("/a"));
        const bool first = journal.isWhole();
        for (int i = 0; i < 5; ++i)
            journal.append(done("/b"));
        ::_exit(first && !journal.isWhole() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    // What is left of the last line does no harm.
    append(begun("/c"));
    const std::vector<std::string> all = outputs();
    EXPECT_EQ(all.front(), "/a");
    EXPECT_EQ(all.back(), "/c");
}

TEST_F(JournalFile, PassesOverBytesThatAPowerFailureLeft) {
    append(begun("/a"));
    writeFile(path, readFile(path) + std::string(300, '\0'));
    append(begun("/b"));
    EXPECT_THAT(outputs(), ElementsAre("/a", "/b"));
}

}  // namespace
}  // namespace tessarine::tests
