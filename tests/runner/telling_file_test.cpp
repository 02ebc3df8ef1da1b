#include "runner/telling_file.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "batch/list_files.h"
#include "runner/failed_list.h"
#include "runner/report_writer.h"
#include "support/other_disks.h"
#include "support/program.h"

// What a run writes beside its outputs where the disk takes nothing for a while.

namespace tessarine::tests {
namespace {

/// No file takes more than so many bytes, for this process.
void limitFiles(rlim_t bytes) {
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

class TellingFileTest : public testing::Test {
  protected:
    const ScratchFolder folder;
    const std::string path = folder / "told";
};

TEST_F(TellingFileTest, KeepsWhatStandsThereUntilItBeginsAnew) {
    writeFile(path, "what is older, and longer");
    TellingFile file("--report", path);
    EXPECT_EQ(readFile(path), "what is older, and longer");
    file.beginAnew();
    EXPECT_EQ(readFile(path), "");
    file.add("new");
    EXPECT_EQ(readFile(path), "new") << "there as soon as it is written";
    EXPECT_TRUE(file.isWhole());
}

TEST_F(TellingFileTest, LeavesNoPieceOfWhatTheDiskDidNotTake) {
    EXPECT_EQ(inChild([&] {
                  TellingFile file("--report", path);
                  file.beginAnew();
                  file.add("first\n");
                  limitFiles(9);
                  file.add("second\n");
                  file.add("third\n");
                  limitFiles(RLIM_INFINITY);
                  file.add("fourth\n");
                  return file.isWhole() ? 1 : 0;
              }),
              0);
    EXPECT_EQ(readFile(path), "first\nfourth\n");
}

TEST_F(TellingFileTest, LeavesNoPieceOnAStandardOutputThatIsAFileEither) {
    for (const int how : {0, O_APPEND}) {
        writeFile(path, "before\n");
        EXPECT_EQ(inChild([&] {
                      const int file = ::open(path.c_str(), O_WRONLY | how);
                      ::lseek(file, 0, SEEK_END);
                      ::dup2(file, STDOUT_FILENO);
                      TellingFile told("--report", "-");
                      told.beginAnew();
                      limitFiles(10);
                      told.add("second\n");
                      limitFiles(RLIM_INFINITY);
                      told.add("third\n");
                      return told.isWhole() ? 1 : 0;
                  }),
                  0);
        EXPECT_EQ(readFile(path), "before\nthird\n");
    }
}

TEST_F(TellingFileTest, AReportIsOneOfWholeLinesBehindAShortage) {
    EXPECT_EQ(inChild([&] {
                  ReportWriter report(path);
                  report.beginAnew();
                  PictureReport entry;
                  for (entry.number = 1; entry.number <= 3; ++entry.number) {
                      // Half of the second line finds room.
                      if (entry.number == 2) limitFiles(readFile(path).size() * 3 / 2);
                      report.write(entry);
                      limitFiles(RLIM_INFINITY);
                  }
                  return report.writeSummary({}, {}) ? 1 : 0;
              }),
              0);
    const std::string text = readFile(path);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
    EXPECT_TRUE(text.starts_with("{\"number\":1,"));
    EXPECT_NE(text.find("\n{\"number\":3,"), std::string::npos);
    EXPECT_NE(text.find("\n{\"summary\":"), std::string::npos);
}

TEST_F(TellingFileTest, AFailedListIsOneOfWholeRecordsBehindAShortage) {
    EXPECT_EQ(inChild([&] {
                  FailedList list(path);
                  list.beginAnew();
                  for (const char* picture : {"/a", "/b", "/c"}) {
                      limitFiles(picture[1] == 'b' ? 200 : RLIM_INFINITY);
                      list.add(picture);
                  }
                  return list.isWhole() ? 1 : 0;
              }),
              0);
    EXPECT_EQ(readFile(path).size(), 2 * pictureRecordBytes);
    EXPECT_EQ(readPictureList(path), (std::vector<std::string>{"/a", "/c"}));
}

}  // namespace
}  // namespace tessarine::tests
