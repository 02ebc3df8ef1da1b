#include "manual_page.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "option_table.h"

namespace tessarine::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Value = OptionEntry::Value;

const std::string page = std::string(TESSARINE_SOURCE_DIR) + "/docs/man/tessarine-batch.1";

std::string contentOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

OptionEntry option(const std::string& name, const std::string& value, const std::string& text,
                   const std::string& group) {
    OptionEntry entry;
    entry.names = {name};
    entry.valueName = value;
    entry.description = text;
    entry.group = group;
    return entry;
}

const OptionEntry& optionOf(const Program& program, const std::string& name) {
    for (const OptionEntry& entry : program.options)
        if (entry.name() == name) return entry;
    throw std::runtime_error("no " + name);
}

const std::string smallPage =
    ".TH X 1\n.SH OPTIONS\n.SS Saving\n.TP\n.BI \\-\\-to \" folder\"\nBy hand.\n"
    ".TP\n.BI \\-\\-name \" text\"\nBy hand as well.\n.SH FILES\nNone.\n";

Program smallProgram() {
    Program program;
    program.name = "x";
    program.options = {option("--to", "FOLDER", "Destination", "Saving"),
                       option("--name", "TEXT", "Name", "Saving")};
    return program;
}

TEST(ManualPage, TheCommittedPageTellsEveryOption) {
    const std::string committed = contentOf(page);
    ASSERT_THAT(committed, HasSubstr(".SH OPTIONS"));
    EXPECT_EQ(completedManualPage(committed, runnerProgram()), committed)
        << "script/docs adds what is missing";
}

TEST(ManualPage, APageThatTellsAllStaysAsItIs) {
    EXPECT_EQ(completedManualPage(smallPage, smallProgram()), smallPage);
}

TEST(ManualPage, AnOptionThatIsMissingGetsAnEntryBehindTheOneBeforeIt) {
    Program program = smallProgram();
    program.options.insert(
        program.options.begin() + 1,
        option("--keep-tree", "", "As with --to: .hidden folders too", "Saving"));
    EXPECT_EQ(completedManualPage(smallPage, program),
              ".TH X 1\n.SH OPTIONS\n.SS Saving\n.TP\n.BI \\-\\-to \" folder\"\nBy hand.\n"
              ".TP\n.B \\-\\-keep\\-tree\n.\\\" as --help tells it\n"
              "As with \\-\\-to: .hidden folders too.\n"
              ".TP\n.BI \\-\\-name \" text\"\nBy hand as well.\n.SH FILES\nNone.\n");
}

TEST(ManualPage, AnOptionOfANewGroupGetsItsSubheading) {
    Program program = smallProgram();
    program.options.push_back(option("--shard", "K/N", "A share", "Sharing"));
    EXPECT_THAT(completedManualPage(smallPage, program),
                HasSubstr("By hand as well.\n.SS Sharing\n.TP\n.BI \"\\-\\-shard\" \" K/N\"\n"
                          ".\\\" as --help tells it\nA share.\n.SH FILES\n"));
}

TEST(ManualPage, WhatWasNotWrittenByHandIsMadeAnew) {
    Program program = smallProgram();
    program.options.push_back(option("--shard", "K/N", "A share", "Saving"));
    const std::string once = completedManualPage(smallPage, program);
    EXPECT_EQ(completedManualPage(once, program), once);
    program.options.back().description = "One share of all";
    EXPECT_THAT(completedManualPage(once, program), HasSubstr("\nOne share of all.\n"));
    EXPECT_THAT(completedManualPage(once, program), Not(HasSubstr("A share")));
    EXPECT_EQ(completedManualPage(once, smallProgram()), smallPage);
}

TEST(ManualPage, AnEntryOfNoOptionIsRefused) {
    Program program = smallProgram();
    program.options.pop_back();
    EXPECT_THROW(completedManualPage(smallPage, program), std::runtime_error);
    EXPECT_THROW(completedManualPage(".TH X 1\n", smallProgram()), std::runtime_error);
}

TEST(OptionTable, ValuesAreWhatTheirNamesSay) {
    const Program runner = runnerProgram();
    EXPECT_EQ(runner.name, "tessarine-batch");
    EXPECT_EQ(optionOf(runner, "--help").names, (std::vector<std::string>{"-h", "--help"}));
    EXPECT_EQ(optionOf(runner, "--recursive").value, Value::none);
    EXPECT_EQ(optionOf(runner, "--to").value, Value::folder);
    EXPECT_EQ(optionOf(runner, "--apply").value, Value::functions);
    EXPECT_TRUE(optionOf(runner, "--apply").isRepeatable);
    EXPECT_FALSE(optionOf(runner, "--to").isRepeatable);
    EXPECT_EQ(optionOf(runner, "--functions").value, Value::file);
    EXPECT_EQ(optionOf(runner, "--functions").extension, "qfk");
    EXPECT_EQ(optionOf(runner, "--report").value, Value::file);
    EXPECT_EQ(optionOf(runner, "--report").extension, "");
    EXPECT_EQ(optionOf(runner, "--jobs").value, Value::free);
    EXPECT_EQ(optionOf(runner, "--jobs").valueName, "N");
    EXPECT_EQ(optionOf(runner, "--apply").valueName, "\"NAME[:KEY=VALUE,...]\"");
    EXPECT_THAT(optionOf(runner, "--mode").words, ElementsAre("independent", "window"));
    EXPECT_EQ(optionOf(runner, "--format").words.size(), 18U);
}

TEST(OptionTable, TheWindowsOptionsAreThoseOfItsHelp) {
    const Program window =
        windowProgram("usage: x\n\n  --help     show this\n  --careful-run  with care\n\nMore.\n");
    ASSERT_EQ(window.options.size(), 2U);
    EXPECT_EQ(window.options[0].name(), "--help");
    EXPECT_EQ(window.options[1].name(), "--careful-run");
    EXPECT_EQ(window.options[1].description, "with care");
    EXPECT_THROW(windowProgram("usage: x\n"), std::runtime_error);
}

TEST(OptionTable, EveryFunctionComesWithItsKeys) {
    const std::vector<FunctionKeys> functions = functionKeys();
    EXPECT_EQ(functions.size(), 69U);
    const auto hue =
        std::find_if(functions.begin(), functions.end(),
                     [](const FunctionKeys& function) { return function.name == "Hue Rotation"; });
    ASSERT_NE(hue, functions.end());
    EXPECT_THAT(hue->keys, ElementsAre("Offset", "Saturation"));
}

}  // namespace
}  // namespace tessarine::tests
