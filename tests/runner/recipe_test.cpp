#include "runner/recipe.h"

#include <filesystem>
#include <functional>

#include <gmock/gmock.h>

#include "batch/batch.h"
#include "batch/platform.h"
#include "runner/function_arguments.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"

namespace tessarine::tests {
namespace {

/// A program with a chain of two functions.
struct Program {
    Program() {
        batch.cboFormat.index = 10;
        batch.Ltray = {{"Contrast", 30, {"20", "0", "0", "0", "0", "False", "", "0", "0"}},
                       {"Negative", 51, {"0", "0", "0", "0", "0", "False", "", "0", "0"}}};
        batch.LSelectedFunctions = {{"Contrast", 1}, {"Negative", 2}};
    }
    std::string key(const PictureTask& task = {1, "/in/a.png", "/out/1.bmp"}) const {
        return Recipe(batch, {}).keyOf(task);
    }

    SilentPlatform platform;
    cBatch batch{platform};
};

TEST(Recipe, ChangesWithWhatIsKeptOfMetadata) {
    const Program program;
    const PictureTask task{1, "/in/a.png", "/out/1.bmp"};
    std::set<std::string> keys;
    for (const MetadataWishes& wishes :
         {MetadataWishes{}, MetadataWishes{true, false, false}, MetadataWishes{false, true, false},
          MetadataWishes{false, true, true}})
        keys.insert(Recipe(program.batch, wishes).keyOf(task));
    EXPECT_EQ(keys.size(), 4U);
}

TEST(Recipe, IsTheSameForTheSame) {
    EXPECT_EQ(Program().key(), Program().key());
    EXPECT_EQ(Program().key().size(), 32U);
}

TEST(Recipe, ChangesWithAllThatShapesAnOutput) {
    const std::vector<std::function<void(cBatch&)>> changes{
        [](cBatch& b) { b.Ltray[0].Tag = 31; },
        [](cBatch& b) { b.Ltray.pop_back(); },
        [](cBatch& b) { std::swap(b.Ltray[0], b.Ltray[1]); },
        [](cBatch& b) { b.Ltray[1].columns[0] = "1"; },
        [](cBatch& b) { b.Ltray[1].columns[4] = "255"; },
        [](cBatch& b) { b.Ltray[1].columns[5] = "True"; },
        [](cBatch& b) { b.Ltray[1].columns[6] = "style"; },
        [](cBatch& b) { b.Ltray[1].columns[8] = "17"; },
        [](cBatch& b) { b.sbDegrees = 10; },
        [](cBatch& b) { b.chkInvt[1] = 1; },
        [](cBatch& b) { b.chkKill[1] = 1; },
        [](cBatch& b) { b.cboFormat.index = 11; },
        [](cBatch& b) { b.funcParam[2] = 5; },
        [](cBatch& b) { b.funcColor[1] = 5; },
        [](cBatch& b) { b.funcOption = true; },
        [](cBatch& b) { b.funcStyle = "Tight"; },
        [](cBatch& b) { b.pickRelX = 0.25F; },
        [](cBatch& b) { b.pickRelY = 0.25F; },
    };
    std::set<std::string> keys{Program().key()};
    for (size_t i = 0; i < changes.size(); ++i) {
        Program program;
        changes[i](program.batch);
        EXPECT_TRUE(keys.insert(program.key()).second) << i;
    }
}

TEST(Recipe, KnowsNothingOfNamesAndPlaces) {
    Program program;
    const std::string key = program.key();
    program.batch.txtName = "Other";
    program.batch.txtDestination = "/elsewhere";
    EXPECT_EQ(program.key({1, "/far/b.PNG", "/out/b.bmp"}), key);
    // But a file is read by its extension.
    EXPECT_NE(program.key({1, "/in/a.jpg", "/out/1.bmp"}), key);
}

TEST(Recipe, CountsTheNumberWhereRandomNumbersAreDrawn) {
    Program program;
    const PictureTask second{2, "/in/a.png", "/out/1.bmp"};
    EXPECT_EQ(program.key(), program.key(second));
    for (const int32_t id : {5, 37}) {
        program.batch.Ltray[1].Tag = id;
        EXPECT_NE(program.key(), program.key(second)) << id;
    }
}

TEST(Recipe, TakesNoOtherFunctionForOneThatDrawsThem) {
    const ScratchFolder folder;
    writePixmap(folder / "a.ppm", randomBuffer(40, 30, 5));
    for (const FunctionDef& function : functionTable()) {
        if (function.call == nullptr || function.treeIndex == 0) continue;
        SilentPlatform platform;
        cBatch batch(platform);
        batch.cboFormat.index = 8;
        CommandLine line;
        const std::string inputs(function.example);
        line.functions = {{FunctionSource::Kind::apply,
                           std::string(function.name) + (inputs.empty() ? "" : ":") + inputs}};
        addFunctions(batch, line);
        batch.cFilter.random = RandomGenerator();
        RunOrder order;
        order.onExists = OnExists::overwrite;
        order.tasks = {{1, folder / "a.ppm", folder / "1.bmp"},
                       {2, folder / "a.ppm", folder / "2.bmp"}};
        batch.BatchEach(order);
        const bool isSame = readFile(folder / "1.bmp") == readFile(folder / "2.bmp");
        const Recipe recipe(batch, {});
        EXPECT_EQ(isSame, recipe.keyOf(order.tasks[0]) == recipe.keyOf(order.tasks[1]))
            << function.name;
    }
}

TEST(Recipe, ComesBackFromJsonWithTheWholeChain) {
    Program program;
    program.batch.Ltray[0].columns[6] = "\xE9";
    program.batch.sbDegrees = -45;
    program.batch.chkInvt = {1, 0, 1};
    program.batch.chkKill = {0, 1, 0};
    program.batch.funcParam = {-70000, 2, 3};
    program.batch.funcColor = {0xFFFFFF, -1};
    program.batch.funcOption = true;
    program.batch.funcStyle = "Tight";
    program.batch.pickRelX = 1.0F / 3;
    program.batch.pickRelY = 0.7F;
    program.batch.iDst.setSize(50, 60);
    const nlohmann::ordered_json json =
        nlohmann::ordered_json::parse(chainAsJson(program.batch).dump());
    SilentPlatform platform;
    cBatch batch(platform);
    batch.cboFormat.index = 10;
    takeChain(batch, json);
    EXPECT_EQ(Recipe(batch, {}).keyOf({1, "a.png", ""}), program.key({1, "a.png", ""}));
    EXPECT_EQ(chainAsJson(batch), chainAsJson(program.batch));
    ASSERT_EQ(batch.LSelectedFunctions.size(), 2U);
    EXPECT_EQ(batch.LSelectedFunctions[1].itemData, 2);
    EXPECT_EQ(batch.Ltray[0].columns[6], "\xE9");
}

}  // namespace
}  // namespace tessarine::tests
