#pragma once

#include <chrono>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"

namespace tessarine::tests {

namespace fs = std::filesystem;

inline PixelBuffer plain(int32_t width, int32_t height, Pixel pixel) {
    return drawBuffer(width, height, [&](int32_t, int32_t) { return pixel; });
}

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// The program with a folder of pictures and an empty destination.
class Runner : public testing::Test {
  protected:
    Runner() {
        fs::create_directory(in);
        fs::create_directory(out);
    }

    Finished run(std::vector<std::string> words, const std::string& input = {}) {
        words.insert(words.begin(), TESSARINE_BATCH);
        return runProgram(words, scratch.path().string(), input);
    }
    /// The same with a destination, to BMP.
    Finished runTo(std::vector<std::string> words, const std::string& input = {}) {
        words.insert(words.begin(), {"--to", out, "--format", "bmp"});
        return run(std::move(words), input);
    }
    /// The program through a line of the shell, in which "$@" is the program with `words`.
    Finished runThroughShell(const std::string& line, std::vector<std::string> words) {
        words.insert(words.begin(), {"/bin/sh", "-c", line, "sh", TESSARINE_BATCH});
        return runProgram(words, scratch.path().string());
    }
    /// The same with an end: a program that waits for ever gives status 124.
    Finished runWithinAMinute(std::vector<std::string> words) {
        words.insert(words.begin(), {"--to", out, "--format", "bmp"});
        return runThroughShell("exec timeout 60 \"$@\"", std::move(words));
    }
    std::string picture(const std::string& name, const PixelBuffer& pixels) {
        fs::create_directories(fs::path(in + "/" + name).parent_path());
        writePixmap(in + "/" + name, pixels);
        return in + "/" + name;
    }
    std::string grey(const std::string& name, uint8_t level) {
        return picture(name, plain(6, 4, {level, level, level, 0}));
    }
    std::set<std::string> outputs() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(out))
            names.insert(entry.path().filename().string());
        return names;
    }
    int levelOf(const std::string& output) const {
        return readBitmapFile(out + "/" + output).at(0, 0).green;
    }
    /// A refusal: one line that holds all of `words`, the status, and nothing written.
    void expectRefused(const Finished& end, int status, const std::vector<std::string>& words) {
        EXPECT_EQ(end.status, status) << end.err;
        EXPECT_EQ(linesOf(end.err).size(), 1U) << end.err;
        EXPECT_EQ(end.out, "");
        for (const std::string& word : words)
            EXPECT_NE(end.err.find(word), std::string::npos) << word << " in " << end.err;
        EXPECT_TRUE(outputs().empty());
    }

    /// Waits until an output is there. \return false where the program ended without one
    bool waitForAnOutput(const Running& running) const {
        while (outputs().empty()) {
            if (running.hasEnded()) return !outputs().empty();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return true;
    }

    const ScratchFolder scratch;
    const std::string in = scratch / "in";
    const std::string out = scratch / "out";
};

}  // namespace tessarine::tests
