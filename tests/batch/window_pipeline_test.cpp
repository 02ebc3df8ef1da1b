#include <chrono>
#include <filesystem>
#include <map>
#include <thread>

#include <gmock/gmock.h>

#include "batch/batch.h"
#include "batch/functions.h"
#include "batch/texts.h"
#include "imagefiles/codec/codec_files.h"
#include "support/misbehaviour.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"
#include "support/recorder.h"

// The window's run with files that are read before their turn: nobody can tell it from one picture
// after the other.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr int32_t bmpRow = 8;

/// Reads and writes through helpers, and at its turn only.
class AtItsTurn : public CodecFiles {
  public:
    using CodecFiles::CodecFiles;
    void expect(const std::vector<ExpectedFile>&) override {}
};

/// All that anybody can tell of a run.
struct Told {
    std::map<std::string, std::string> outputs;
    std::vector<std::string> entries;
    std::string overview;
    std::vector<std::string> changes;
    int moments = 0;
    uint32_t random = 0;

    friend bool operator==(const Told&, const Told&) = default;
};

class WindowPipeline : public testing::Test {
  protected:
    static CodecFiles::Options options() {
        CodecFiles::Options options;
        options.program = TESSARINE_CODEC_MISBEHAVING;
        options.wishes = {1.0, uint64_t{256} << 20};
        options.settled = 0ns;
        return options;
    }
    std::string good(const std::string& name, uint32_t seed, int32_t width = 31) const {
        fs::create_directories(fs::path(scratch / name).parent_path());
        writePixmap(scratch / name, randomBuffer(width, 17, seed));
        return scratch / name;
    }
    std::string other(const std::string& name, const std::string& bytes) const {
        writeFile(scratch / name, bytes);
        return scratch / name;
    }
    /// Runs over files with Noise, and whatever else happens in between.
    Told run(PictureFiles& files, const std::vector<std::string>& paths,
             const std::function<void(Recorder&, cBatch&)>& more = {}) const {
        const std::string out = scratch / "out";
        fs::create_directories(out);
        Recorder platform;
        cBatch batch(platform, files);
        batch.txtDestination = out;
        batch.txtName = "Sample";
        batch.cboFormat.index = bmpRow;
        batch.chkOverwrite = 1;
        for (const std::string& path : paths)
            batch.lvSelected.push_back({fileNameOf(path), extensionOf(path), path, folderOf(path)});
        batch.SelectNode(findFunction("Noise")->treeIndex);
        batch.AddFunction("Noise");
        platform.changes.clear();
        platform.giveWays = 0;
        if (more) more(platform, batch);
        batch.CmdBatchAll();
        Told told;
        for (const auto& entry : fs::directory_iterator(out))
            told.outputs[entry.path().filename().string()] = readFile(entry.path().string());
        for (const PictureReport& entry : batch.report.entries())
            told.entries.push_back(std::to_string(entry.number) + " " + entry.input + " " +
                                   entry.output + " " + statusText(entry.status) + " " +
                                   entry.error + " " + std::to_string(entry.width) + " " +
                                   std::to_string(entry.bytes));
        told.overview = batch.RTF;
        told.changes = platform.changes;
        told.moments = platform.giveWays;
        told.random = batch.cFilter.random.state();
        fs::remove_all(out);
        return told;
    }
    /// The same run with and without reading ahead.
    void expectTheSame(const std::function<std::vector<std::string>()>& prepare,
                       const std::function<void(Recorder&, cBatch&)>& more = {}) const {
        Told plain;
        Told ahead;
        {
            const std::vector<std::string> paths = prepare();
            AtItsTurn files(options());
            plain = run(files, paths, more);
        }
        {
            const std::vector<std::string> paths = prepare();
            CodecFiles files(options());
            ahead = run(files, paths, more);
        }
        EXPECT_FALSE(plain.entries.empty());
        EXPECT_EQ(ahead.entries, plain.entries);
        EXPECT_EQ(ahead.overview, plain.overview);
        EXPECT_EQ(ahead.changes, plain.changes);
        EXPECT_EQ(ahead.moments, plain.moments);
        EXPECT_EQ(ahead.random, plain.random);
        EXPECT_TRUE(ahead.outputs == plain.outputs);
    }

    const ScratchFolder scratch;
};

TEST_F(WindowPipeline, GoodBadAndMisbehavingFilesGiveTheSame) {
    expectTheSame([&] {
        return std::vector<std::string>{good("a.ppm", 1),
                                        good("b.ppm", 2, 80),
                                        other("bad.png", "no picture"),
                                        scratch / "a.ppm",
                                        other("crash.ppm", misbehavingFile("crash")),
                                        scratch / "none.gif",
                                        other("hang.ppm", misbehavingFile("hang")),
                                        good("c.ppm", 3, 12),
                                        other("lie.ppm", misbehavingFile("lie-size")),
                                        scratch / "b.ppm"};
    });
}

TEST_F(WindowPipeline, ABasketThatHoldsItsOwnOutputsGivesTheSame) {
    expectTheSame([&] {
        fs::create_directories(scratch / "out");
        fs::remove(scratch / "door");
        fs::create_directory_symlink(scratch / "out", scratch / "door");
        // The first is written by the run, the second read through another path, the third not
        // there before.
        good("out/Sample1.bmp", 7);
        return std::vector<std::string>{good("a.ppm", 1), scratch / "out/Sample1.bmp",
                                        scratch / "door/Sample2.bmp", scratch / "out/Sample3.bmp",
                                        good("b.ppm", 2)};
    });
}

TEST_F(WindowPipeline, AFileThatIsChangedBeforeItsTurnIsReadAsItIsThen) {
    expectTheSame(
        [&] {
            return std::vector<std::string>{good("a.ppm", 1), good("b.ppm", 2), good("c.ppm", 3)};
        },
        [&](Recorder& platform, cBatch&) {
            // The moment before the first picture's row: the others are being read ahead.
            platform.onGiveWay = {nullptr, [&] {
                                      std::this_thread::sleep_for(100ms);
                                      good("b.ppm", 50);
                                      fs::remove(scratch / "c.ppm");
                                  }};
        });
}

TEST_F(WindowPipeline, AStopAndARunInsideGiveTheSame) {
    const auto basket = [&] {
        std::vector<std::string> paths;
        for (uint32_t i = 1; i <= 6; ++i)
            paths.push_back(good("p" + std::to_string(i) + ".ppm", i));
        return paths;
    };
    expectTheSame(basket, [](Recorder& platform, cBatch& batch) {
        platform.onGiveWay = {nullptr, nullptr, nullptr, [&batch] { batch.CmdStop(); }};
    });
    expectTheSame(basket, [](Recorder& platform, cBatch& batch) {
        platform.onGiveWay = {nullptr, nullptr, [&batch] {
                                  batch.txtName = "Inner";
                                  batch.CmdBatchAll();
                                  batch.txtName = "Outer";
                              }};
    });
}

}  // namespace
}  // namespace tessarine::tests
