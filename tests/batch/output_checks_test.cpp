#include "batch/output_checks.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "support/files.h"
#include "support/paths.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using Danger = PictureInDanger::Danger;

class OutputChecks : public testing::Test {
  protected:
    OutputChecks() {
        fs::create_directory(scratch / "in");
        fs::create_directory(scratch / "out");
        for (int32_t i = 1; i <= 3; ++i)
            order.tasks.push_back({i, file("in/" + std::to_string(i) + ".png"),
                                   scratch / ("out/S" + std::to_string(i) + ".png")});
        order.onExists = OnExists::overwrite;
    }
    std::string file(const std::string& name) const {
        writeAll(scratch / name, "picture");
        return scratch / name;
    }
    void expectDanger(Danger danger, const std::string& input, const std::string& output) const {
        const auto found = pictureInDanger(order);
        ASSERT_TRUE(found.has_value());
        EXPECT_EQ(found->danger, danger);
        EXPECT_EQ(found->input, input);
        EXPECT_EQ(found->output, output);
    }
    void expectNone() const { EXPECT_FALSE(pictureInDanger(order).has_value()); }

    const ScratchFolder scratch;
    RunOrder order;
};

TEST_F(OutputChecks, PicturesApartFromTheOutputsAreInNoDanger) {
    expectNone();
    file("out/S1.png");
    expectNone();
    order.tasks.clear();
    expectNone();
}

TEST_F(OutputChecks, APictureUnderAnOutputsNameWouldBeReplacedByWhateverPath) {
    file("out/S2.png");
    fs::create_symlink(scratch / "out", scratch / "link");
    fs::create_symlink(scratch / "out/S2.png", scratch / "in/link.png");
    for (const std::string& input : {scratch / "out/S2.png", scratch / "in/../out/S2.png",
                                     scratch / "link/S2.png", scratch / "in/link.png"}) {
        order.tasks[2].input = input;
        expectDanger(Danger::replaced, input, scratch / "out/S2.png");
    }
}

TEST_F(OutputChecks, ThatHoldsOnlyWhereOutputsAreReplaced) {
    order.tasks[2].input = file("out/S2.png");
    for (const OnExists wish : {OnExists::keep, OnExists::fail}) {
        order.onExists = wish;
        expectNone();
    }
}

TEST_F(OutputChecks, APictureThatIsNotThereMayBeMadeByTheRun) {
    order.tasks[2].input = scratch / "out/S1.png";
    fs::create_symlink("out/S1.png", scratch / "dangling.png");
    for (const OnExists wish : {OnExists::overwrite, OnExists::keep}) {
        order.onExists = wish;
        expectDanger(Danger::made, scratch / "out/S1.png", scratch / "out/S1.png");
    }
    order.tasks[2].input = scratch / "dangling.png";
    expectDanger(Danger::made, scratch / "dangling.png", scratch / "out/S1.png");
}

TEST_F(OutputChecks, ItsOwnOutputComesTooLateToBeReadWhereNothingIsReplaced) {
    order.tasks[2].input = scratch / "out/S3.png";
    expectDanger(Danger::made, scratch / "out/S3.png", scratch / "out/S3.png");
    order.onExists = OnExists::keep;
    expectNone();
}

TEST_F(OutputChecks, AMissingPictureOfAnotherFolderOrNameIsInNoDanger) {
    order.tasks[1].input = scratch / "in/S1.png";
    order.tasks[2].input = scratch / "out/S9.png";
    expectNone();
    order.tasks[2].input = scratch / "nowhere/S1.png";
    expectNone();
}

TEST_F(OutputChecks, OutputsMayLieInSeveralFolders) {
    fs::create_directory(scratch / "more");
    order.tasks[1].output = scratch / "more/S2.png";
    order.tasks[2].input = scratch / "more/S2.png";
    expectDanger(Danger::made, scratch / "more/S2.png", scratch / "more/S2.png");
    file("more/S2.png");
    expectDanger(Danger::replaced, scratch / "more/S2.png", scratch / "more/S2.png");
    order.tasks[2].input = scratch / "out/S2.png";
    expectNone();
}

}  // namespace
}  // namespace tessarine::tests
