#pragma once

#include <functional>
#include <string>
#include <sys/resource.h>
#include <utility>

#include <gmock/gmock.h>

#include "imagefiles/codec/codec_files.h"
#include "support/paths.h"
#include "support/program.h"
#include "support/scripted_helper.h"

namespace tessarine::tests {

constexpr Pixel teal{120, 110, 0, 0};
constexpr int32_t side = 8;

/// A helper as it should be.
inline void serveAll(HelperEndpoint& helper) {
    helper.beReady();
    for (;;) {
        const std::optional<ToHelper> message = helper.hear();
        if (!message) return;
        if (const auto* read = std::get_if<ReadRequest>(&*message)) {
            helper.serve(*read, side, side, teal);
        } else if (const auto* write = std::get_if<WriteRequest>(&*message)) {
            static_cast<void>(::write(helper.descriptors.at(0).get(), "written", 7));
            helper.say(WriteDone{write->number, FileError::none, {}});
        }
    }
}

/// A helper that answers its first reading as told, and listens until it is ended.
inline ScriptedHelper::Script answering(
    std::function<void(HelperEndpoint&, const ReadRequest&)> answer) {
    return [answer = std::move(answer)](HelperEndpoint& helper) {
        helper.beReady();
        const auto request = helper.hearA<ReadRequest>();
        if (!request) return;
        answer(helper, *request);
        while (helper.hear())
            ;
    };
}

/// A limit on the size of files, as long as this lives.
class FileLimit {
  public:
    explicit FileLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;

  private:
    rlimit before_{};
};

class CodecFilesTest : public testing::Test {
  protected:
    CodecFilesTest() { writeFile(picture, "some bytes"); }

    CodecFiles::Options with(ScriptedHelpers& helpers) const {
        CodecFiles::Options options;
        options.start = helpers.starter();
        return options;
    }
    void expectGood(const ReadOutcome& outcome) const {
        EXPECT_EQ(errorClass(outcome.error), "") << outcome.message;
        ASSERT_TRUE(outcome.bitmap.has_value());
        EXPECT_EQ(outcome.bitmap->width(), side);
        EXPECT_EQ(outcome.bitmap->height(), side);
        EXPECT_EQ(outcome.bitmap->row(side - 1)[side - 1], teal);
        EXPECT_EQ(outcome.depth, 24);
    }
    /// A helper that answers a reading so costs that picture and is replaced; the next picture is
    /// read.
    void expectLie(std::function<void(HelperEndpoint&, const ReadRequest&)> answer,
                   const std::string& word) {
        ScriptedHelpers helpers({answering(std::move(answer)), serveAll});
        CodecFiles files(with(helpers));
        const ReadOutcome outcome = files.read(picture, "png");
        EXPECT_EQ(errorClass(outcome.error), "codec-died");
        EXPECT_THAT(outcome.message, testing::HasSubstr("broke its rules"));
        EXPECT_THAT(outcome.message, testing::HasSubstr(word));
        EXPECT_FALSE(outcome.bitmap.has_value());
        expectGood(files.read(picture, "png"));
        EXPECT_EQ(helpers.kinds.size(), 2U);
    }
    /// The same for a writing.
    void expectWriteLie(std::function<void(HelperEndpoint&, const WriteRequest&)> answer) {
        ScriptedHelpers helpers({[answer](HelperEndpoint& helper) {
                                     helper.beReady();
                                     if (const auto request = helper.hearA<WriteRequest>())
                                         answer(helper, *request);
                                     while (helper.hear())
                                         ;
                                 },
                                 serveAll});
        CodecFiles files(with(helpers));
        OutputFile output;
        ASSERT_TRUE(output.create(scratch / "out"));
        const WriteOutcome outcome = files.write(Bitmap(3, 3), "bmp", 8, output);
        EXPECT_EQ(errorClass(outcome.error), "codec-died");
        EXPECT_THAT(outcome.message, testing::HasSubstr("broke its rules"));
        EXPECT_EQ(errorClass(files.write(Bitmap(3, 3), "bmp", 8, output).error), "");
        EXPECT_EQ(helpers.kinds.size(), 2U);
    }

    const ScratchFolder scratch;
    const std::string picture = scratch / "a.png";
};

}  // namespace tessarine::tests
