#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "imagefiles/codec/admission.h"
#include "imagefiles/picture_files.h"

namespace tessarine {

/// What tells a file from any other, and from itself after a change: device, inode, size, and the
/// times of its last changes.
struct FileMark {
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t size = 0;
    int64_t changedContent = 0;  ///< nanoseconds
    int64_t changedAtAll = 0;

    friend bool operator==(const FileMark&, const FileMark&) = default;
};

/// The marks of a picture file and of those beside it, in the order of companionPaths(); nothing
/// where there is no such file.
using FileMarks = std::vector<std::optional<FileMark>>;

/// The mark of an open file.
std::optional<FileMark> markOf(int file);
/// The marks of the files that paths lead to now.
FileMarks marksNow(const std::string& path, const std::string& extension);

/// Reads files before their turn, on threads of its own, and gives what it read where a reading at
/// their turn could give nothing else. Members are for one thread; what they call is called on it.
class ReadingAhead {
  public:
    /// Reads a file for its place in memory.
    /// \param isOff  whether nobody wants it any more; the outcome is then dropped
    /// \param marks  what the files were when they were opened
    using Read = std::function<ReadOutcome(const ExpectedFile& file, Admission::Place& place,
                                           const std::function<bool()>& isOff, FileMarks& marks)>;

    /// \param settled  a file that changed within so long before it was opened is not read ahead:
    ///                 clocks of file systems go by steps, and a second change may not show
    ReadingAhead(Admission& admission, std::chrono::nanoseconds settled, Read read)
        : admission_(admission), settled_(settled), read_(std::move(read)) {}
    /// What is under way is ended.
    ~ReadingAhead();
    ReadingAhead(const ReadingAhead&) = delete;
    ReadingAhead& operator=(const ReadingAhead&) = delete;

    /// These files are to be read ahead, in this order; what is not among them is dropped.
    void expect(const std::vector<ExpectedFile>& files);
    /// What was read ahead of a file, once; nothing where it has to be read now. Where it is being
    /// read this waits for its end.
    /// \param meanwhile  as in Waiting; may be empty
    std::optional<ReadOutcome> take(const std::string& path, const std::string& extension,
                                    const std::function<void()>& meanwhile);
    /// The place in memory of the picture whose turn it is; nullptr where nothing is read ahead.
    Admission::Place* placeOfTurn() { return placeOfTurn_.get(); }

  private:
    struct Item;

    void addThread();
    void work();

    Admission& admission_;
    const std::chrono::nanoseconds settled_;
    const Read read_;
    std::unique_ptr<Admission::Place> placeOfTurn_;
    std::mutex guard_;
    std::condition_variable changed_;
    std::deque<std::shared_ptr<Item>> items_;  ///< in the order in which they are expected
    bool ending_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace tessarine
