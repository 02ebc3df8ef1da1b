#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "imagefiles/codec/admission.h"
#include "imagefiles/codec/blocks.h"
#include "imagefiles/codec/helper.h"
#include "imagefiles/codec/helper_starter.h"
#include "imagefiles/codec/limits.h"
#include "imagefiles/codec/reading_ahead.h"
#include "imagefiles/picture_files.h"
#include "pixels/pixel_memory.h"

namespace tessarine {

class HelperLink;
class HelperRequest;
struct Waiting;

/// Reads and writes picture files through helper processes. A file that takes a helper down, hangs
/// it or turns it against us costs that picture and no other: the helper is replaced.
///
/// Members may be called from any thread, and again from within onWaiting; each call has a helper
/// to itself; expect() and the read() that it is meant for belong to one thread. Callers' threads
/// may come and go: helpers are started on a thread of this object.
class CodecFiles : public PictureFiles {
  public:
    struct Options {
        LimitWishes wishes;
        /// The helper program, for which see helperProgram().
        std::string program;
        /// Told once for each text: "the kernel refuses ...", what this system does not grant of a
        /// helper's confinement.
        std::function<void(const std::string&)> onNotice;
        /// Called about every 50 ms while an answer takes longer than 200 ms, on the thread that
        /// waits.
        std::function<void()> onWaiting;
        /// How a helper comes to be, where it is not a process of `program`. Called on a thread
        /// that lives as long as the CodecFiles.
        /// \throws StatementFailed where it does not
        std::function<std::unique_ptr<Helper>(HelperKind)> start;
        /// Whether the first helper is started at once, to be ready when it is needed.
        bool startsEarly = true;
        /// Gives the numbers of requests; left out, they cannot be foreseen.
        std::function<uint32_t()> number;
        /// Helpers of each kind that are kept when nothing is to be done, until prepareFor() tells
        /// another number.
        size_t mostIdle = 1;
        /// Bytes that pictures in flight may take together, one alone more than that; left out,
        /// half of what is available when prepareFor() is called.
        std::optional<uint64_t> budget;
        /// How long a file has to have been as it is to be read ahead.
        std::chrono::nanoseconds settled = std::chrono::seconds(2);
    };

    /// Does not wait for the first helper. Where none can be started each picture tells so.
    explicit CodecFiles(Options options);
    ~CodecFiles() override;
    CodecFiles(const CodecFiles&) = delete;
    CodecFiles& operator=(const CodecFiles&) = delete;

    /// Starts what is missing of so many helpers, without waiting for them, and keeps so many and
    /// no more from now on.
    void prepareFor(size_t pictures) override;
    /// Calls nobody while it waits.
    std::unique_ptr<PictureFiles> onePicture() override;
    void expect(const std::vector<ExpectedFile>& files) override;
    ReadOutcome read(const std::string& path, const std::string& extension) override;
    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file) override;
    /// Reads at once, whatever was read ahead.
    ReadOutcome readWithMetadata(const std::string& path, const std::string& extension,
                                 MetadataWanted wanted) override;
    WriteOutcome writeWithMetadata(const Bitmap& picture, const std::string& extension,
                                   int16_t formatIndex, const MetadataToAdd& metadata,
                                   OutputFile& file) override;

    /// The size that a picture file's header promises. No pixels are decoded, and a few hundred
    /// kilobytes read, unless the size stands farther behind or nowhere but in the pixels. Nothing
    /// is thrown.
    LookOutcome lookAt(const std::string& path, const std::string& extension);

    /// Memory that the helpers share: what lies in it is written without a copy.
    PixelMemory& memory() { return memory_; }

  private:
    class SharedMemory : public PixelMemory {
      public:
        explicit SharedMemory(BlockPool& pool) : pool_(pool) {}
        std::shared_ptr<Pixel> take(size_t pixels) override;
        void giveBack() override { pool_.giveBack(); }

      private:
        BlockPool& pool_;
    };

    struct Failure {
        FileError error = FileError::none;
        std::string message;
    };

    class OnePicture;

    /// \param admit  asked before memory is granted
    /// \param marks  filled where it is wanted
    ReadOutcome read(const ExpectedFile& file, const std::function<bool(uint64_t pixels)>& admit,
                     const Waiting& waiting, FileMarks* marks = nullptr,
                     std::optional<MetadataWanted> metadata = {});
    ReadOutcome readAhead(const ExpectedFile& file, Admission::Place& place,
                          const std::function<bool()>& isOff, FileMarks& marks);
    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file, const Waiting& waiting,
                       const MetadataToAdd* metadata = nullptr);
    /// A helper that is kept, or was started for later; nullptr where there is none.
    std::unique_ptr<HelperLink> takeKept(HelperKind kind);
    std::unique_ptr<HelperLink> acquire(HelperKind kind, const Waiting& waiting);
    void release(HelperKind kind, std::unique_ptr<HelperLink> link);
    void notice(const std::string& refused);
    Failure ask(HelperKind kind, HelperRequest& request, const Waiting& waiting);

    Options options_;
    BlockPool pool_;
    SharedMemory memory_{pool_};
    Admission admission_;
    HelperStarter starter_;
    std::mutex guard_;
    size_t mostIdle_;
    std::array<std::vector<std::unique_ptr<HelperLink>>, 2> idle_;  ///< by HelperKind
    std::vector<HelperStarter::Coming> coming_;                     ///< helpers for files
    std::vector<std::string> noticed_;
    ReadingAhead ahead_;  ///< the first to go
};

}  // namespace tessarine
