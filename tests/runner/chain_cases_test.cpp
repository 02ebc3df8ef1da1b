#include <filesystem>

#include <gtest/gtest.h>

#include "runner/preparation.h"
#include "support/cases.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"

// Expected pictures of whole chains, through the program itself.

namespace tessarine::tests {
namespace {

/// The ids of a case's rows, told as "id=1 p0=... name=... ; id=2 ...".
std::vector<std::string> idsOf(const std::string& rows) {
    std::vector<std::string> ids;
    for (size_t at = rows.find("id="); at != std::string::npos; at = rows.find("id=", at + 1))
        ids.push_back(rows.substr(at + 3, rows.find(' ', at) - at - 3));
    return ids;
}

/// The command line of a case, the program's name included.
std::vector<std::string> wordsOf(const CaseRow& row, const ScratchFolder& folder,
                                 const std::string& mode) {
    std::vector<std::string> words{TESSARINE_BATCH,
                                   "--mode",
                                   mode,
                                   "--quiet",
                                   "--format",
                                   "bmp",
                                   "--overwrite",
                                   "--to",
                                   folder.path().string(),
                                   "--functions",
                                   casesFolder() + row.at("list")};
    for (const std::string& option : split(row.at("options"), ' '))
        words.push_back(option);
    words.push_back(casesFolder() + row.at("picture"));
    return words;
}

/// Fills what the run of a case reads, as the program does.
void prepareCase(cBatch& batch, const CaseRow& row, const ScratchFolder& folder,
                 const std::string& mode) {
    const std::vector<std::string> words = wordsOf(row, folder, mode);
    std::vector<const char*> argv;
    for (const std::string& word : words)
        argv.push_back(word.c_str());
    const auto line = readCommandLine(static_cast<int>(argv.size()), argv.data());
    ASSERT_TRUE(line.has_value());
    ASSERT_EQ(line->windowMode, mode == "window");
    prepareRun(batch, *line);
}

/// Where the run's picture differs from the one that the case expects; empty where nowhere.
std::string differenceOf(const CaseRow& row, const ScratchFolder& folder) {
    return firstDifference(readBitmapFile(folder / "Sample1.bmp"),
                           readPixmap(casesFolder() + row.at("expected")));
}

TEST(ChainCases, TheWindowsRunGivesTheExpectedPictureToTheByte) {
    const ScratchFolder scratch;
    Tally tally("chains.tsv");
    for (const CaseRow& row : readCases("chains.tsv")) {
        const Finished run = runProgram(wordsOf(row, scratch, "window"), scratch.path().string());
        ASSERT_EQ(run.status, 0) << row.at("name") << ": " << run.err;
        const std::string difference = differenceOf(row, scratch);
        EXPECT_EQ(difference, "") << row.at("name");
        const std::vector<std::string> ids = idsOf(row.at("rows"));
        tally.count(ids.size() == 1 ? "id " + ids[0] : "chains", difference.empty());
    }
    EXPECT_EQ(tally.all(), 379);
}

TEST(ChainCases, TheFirstPictureByItselfIsTheOneOfTheWindowsRun) {
    const ScratchFolder scratch;
    int cases = 0;
    for (const CaseRow& row : readCases("chains.tsv")) {
        SilentPlatform platform;
        cBatch batch(platform);
        prepareCase(batch, row, scratch, "independent");
        std::filesystem::remove(scratch / "Sample1.bmp");
        batch.BatchEach();
        ASSERT_EQ(batch.report.entries().size(), 1U);
        ASSERT_EQ(batch.report.entries()[0].status, PictureReport::Status::saved)
            << row.at("name") << ": " << batch.report.entries()[0].message;
        EXPECT_EQ(differenceOf(row, scratch), "") << row.at("name");
        ++cases;
    }
    EXPECT_EQ(cases, 379);
}

TEST(ChainCases, TheRunLeavesTheExpectedRandomNumbers) {
    const ScratchFolder scratch;
    int drawing = 0;
    for (const CaseRow& row : readCases("chains.tsv")) {
        SilentPlatform platform;
        cBatch batch(platform);
        prepareCase(batch, row, scratch, "window");
        // The preview that follows a run would draw on.
        batch.LSelectedFunctions.clear();
        batch.CmdBatchAll();
        EXPECT_EQ(std::to_string(batch.cFilter.random.state()), row.at("rng_end"))
            << row.at("name");
        drawing += batch.cFilter.random.state() != RandomGenerator::firstState ? 1 : 0;
    }
    EXPECT_GT(drawing, 10);
}

}  // namespace
}  // namespace tessarine::tests
