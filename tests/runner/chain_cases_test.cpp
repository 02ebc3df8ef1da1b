#include <algorithm>

#include <gtest/gtest.h>

#include "batch/functions.h"
#include "support/cases.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"

// Expected pictures of whole chains, through the program itself.

namespace tessarine::tests {
namespace {

/// The ids of a case's rows, told as "id=1 p0=... name=... ; id=2 ...".
std::vector<int32_t> idsOf(const std::string& rows) {
    std::vector<int32_t> ids;
    for (size_t at = rows.find("id="); at != std::string::npos; at = rows.find("id=", at + 1))
        ids.push_back(std::stoi(rows.substr(at + 3)));
    return ids;
}

bool isCarriedOut(int32_t id) {
    const FunctionDef* function = findFunction(id);
    return function != nullptr && function->call != nullptr;
}

TEST(ChainCases, TheWindowsRunGivesTheExpectedPictureToTheByte) {
    const ScratchFolder scratch;
    Tally tally("chains.tsv");
    for (const CaseRow& row : readCases("chains.tsv")) {
        const std::vector<int32_t> ids = idsOf(row.at("rows"));
        if (!std::all_of(ids.begin(), ids.end(), isCarriedOut)) continue;
        std::vector<std::string> words{TESSARINE_BATCH,
                                       "--mode",
                                       "window",
                                       "--quiet",
                                       "--format",
                                       "bmp",
                                       "--overwrite",
                                       "--to",
                                       scratch.path().string(),
                                       "--functions",
                                       casesFolder() + row.at("list")};
        for (const std::string& option : split(row.at("options"), ' '))
            words.push_back(option);
        words.push_back(casesFolder() + row.at("picture"));
        const Finished run = runProgram(words, scratch.path().string());

        ASSERT_EQ(run.status, 0) << row.at("name") << ": " << run.err;
        const std::string difference =
            firstDifference(readBitmapFile(scratch / "Sample1.bmp"),
                            readPixmap(casesFolder() + row.at("expected")));
        EXPECT_EQ(difference, "") << row.at("name");
        tally.count(ids.size() == 1 ? "id " + std::to_string(ids[0]) : "chains",
                    difference.empty());
    }
    EXPECT_GE(tally.all(), 57);
}

}  // namespace
}  // namespace tessarine::tests
