#include "runner/function_arguments.h"

#include <gtest/gtest.h>

#include "runner/refusal.h"

// What --apply leaves in the rows.

namespace tessarine::tests {
namespace {

class FunctionArguments : public testing::Test {
  protected:
    void apply(const std::vector<std::string>& arguments) {
        for (const std::string& argument : arguments)
            line.functions.push_back({FunctionSource::Kind::apply, argument});
        addFunctions(batch, line);
    }
    /// Columns 1 to 9 of a row.
    std::array<std::string, 9> columns(size_t row) const {
        std::array<std::string, 9> all;
        for (int k = 1; k <= 9; ++k)
            all[static_cast<size_t>(k - 1)] = batch.Ltray.at(row).column(k);
        return all;
    }

    SilentPlatform platform;
    cBatch batch{platform};
    CommandLine line;
};

TEST_F(FunctionArguments, ResizesDoNotShareTheirSizes) {
    apply({"Resize:Width=640,Height=480,Keep proportions=off,Anti-Alias=off", "Resize",
           "Resize:Height=30"});
    ASSERT_EQ(batch.Ltray.size(), 3U);
    const auto sizes = [&](size_t row) {
        const auto all = columns(row);
        return std::vector<std::string>{all[0], all[1], all[2], all[5]};
    };
    EXPECT_EQ(sizes(0), (std::vector<std::string>{"640", "480", "0", "False"}));
    EXPECT_EQ(sizes(1), (std::vector<std::string>{"100", "100", "1", "True"}));
    EXPECT_EQ(sizes(2), (std::vector<std::string>{"100", "30", "1", "True"}));
}

TEST_F(FunctionArguments, IsolatesDoNotShareColoursAndPoints) {
    apply({"Isolate:Tolerance=7,X=150,Y=20,Color0=112233,Color1=445566", "Isolate", "Negative"});
    ASSERT_EQ(batch.Ltray.size(), 3U);
    const auto first = columns(0);
    EXPECT_EQ(first[0], "7");
    EXPECT_EQ(first[3], std::to_string(0x332211)) << "red stands in the low byte";
    EXPECT_EQ(first[4], std::to_string(0x665544));
    EXPECT_EQ(first[7], "150");
    EXPECT_EQ(first[8], "20");
    const auto second = columns(1);
    EXPECT_EQ(second[0], "100");
    EXPECT_NE(second[3], first[3]);
    EXPECT_EQ(second[4], std::to_string(0x0000C0));
    EXPECT_EQ(second[7], "0");
    EXPECT_EQ(second[8], "0");
    EXPECT_EQ(columns(2)[7], "0");
}

TEST_F(FunctionArguments, AFunctionAddedTwiceIsTheSameAsAddedAlone) {
    for (const char* once : {"Glass:Vertical=Tight", "Curtain:Vertical=on", "Swap RGB:Red=B,Blue=R",
                             "Rotate Intelligently:Antialiasing=on", "Contrast:Level=+4"}) {
        cBatch alone(platform);
        CommandLine single;
        const std::string name = std::string(once).substr(0, std::string(once).find(':'));
        single.functions = {{FunctionSource::Kind::apply, name}};
        addFunctions(alone, single);
        cBatch both(platform);
        CommandLine pair;
        pair.functions = {{FunctionSource::Kind::apply, once}, {FunctionSource::Kind::apply, name}};
        addFunctions(both, pair);
        ASSERT_EQ(both.Ltray.size(), 2U);
        EXPECT_NE(both.Ltray[0].columns, both.Ltray[1].columns) << once;
        for (int k = 1; k <= 7; ++k)
            EXPECT_EQ(both.Ltray[1].column(k), alone.Ltray.at(0).column(k)) << once << " " << k;
    }
}

TEST_F(FunctionArguments, APointGivesItsColourAndAColourGivenWins) {
    apply({"Isolate:X=10,Y=12", "Isolate:Color0=010203,X=10,Y=12"});
    const Pixel pixel = batch.iOri.drawn().row(12)[10];
    EXPECT_EQ(columns(0)[3], std::to_string(pixel.red | pixel.green << 8 | pixel.blue << 16));
    EXPECT_EQ(columns(1)[3], std::to_string(0x030201));
}

TEST_F(FunctionArguments, APointIsForgottenBySheetsThatAskForNone) {
    apply({"Isolate:X=10,Y=12", "Grid"});
    cBatch alone(platform);
    CommandLine grid;
    grid.functions = {{FunctionSource::Kind::apply, "Grid"}};
    addFunctions(alone, grid);
    EXPECT_EQ(batch.Ltray.at(1).columns, alone.Ltray.at(0).columns);
}

TEST_F(FunctionArguments, WhatTheSheetShowsAtTheRunComesFromAllOfThem) {
    line.invert = "b";
    line.kill = "b";
    line.degrees = int16_t{-7};
    apply({"Swap RGB:Invert=rg", "Rotate Intelligently:Degrees=40",
           "Rotate Intelligently:Degrees=+40", "Swap RGB:Invert=gr"});
    EXPECT_EQ(batch.chkInvt, (std::array<int16_t, 3>{1, 1, 1}));
    EXPECT_EQ(batch.chkKill, (std::array<int16_t, 3>{0, 0, 1}));
    EXPECT_EQ(batch.sbDegrees, -7);
}

TEST_F(FunctionArguments, EveryInputThatIsListedIsTaken) {
    for (const TreeNode& node : catalogueTree()) {
        const FunctionDef* function = findFunction(node.functionId);
        if (function == nullptr) continue;
        for (const FunctionInput& input : inputsOf(*function)) {
            if (input.initial.empty()) continue;
            cBatch other(platform);
            CommandLine one;
            one.functions = {{FunctionSource::Kind::apply,
                              std::string(function->name) + ":" + input.key + "=" + input.initial}};
            EXPECT_NO_THROW(addFunctions(other, one)) << one.functions[0].value;
            EXPECT_EQ(other.Ltray.size(), 1U);
        }
    }
}

TEST_F(FunctionArguments, AValueOutOfRangeThrowsAndNamesTheRange) {
    try {
        apply({"Contrast:Level=+251"});
        FAIL() << "it was taken";
    } catch (const Refusal& refusal) {
        EXPECT_EQ(refusal.status(), ExitStatus::commandLine);
        EXPECT_NE(std::string(refusal.what()).find("-100 to 250"), std::string::npos);
    }
}

}  // namespace
}  // namespace tessarine::tests
