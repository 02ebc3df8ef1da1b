#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/reading_ahead.h"

namespace tessarine {

/// A source as it was when an output was made of it.
struct SourceRecord {
    FileMark mark;
    std::string hash;
};

/// How an output stood on the disk. Size and time of modification alone do not tell an output from
/// one that another run made of the same picture: files of some formats are all of one size, and
/// with --keep-metadata an output has its picture's time.
struct OutputMark {
    int64_t bytes = 0;
    int64_t modified = 0;            ///< nanoseconds
    std::optional<int64_t> changed;  ///< in any way, nanoseconds; older journals do not tell it

    friend bool operator==(const OutputMark&, const OutputMark&) = default;
};

/// One line of a journal: what is known of an output from then on.
struct JournalEntry {
    enum class State {
        begun,  ///< it was not there, or is the program's own, and is being made: what stands
                ///< there from then on is the program's
        done,   ///< it was made, and is told below
        left,   ///< it was not made after all: what comes to stand there is not the program's
    };
    State state = State::left;
    std::string output;  ///< as RealNames has it

    int32_t number = 0;
    std::string input;
    std::string key;  ///< of the recipe
    /// The picture's file and those beside it, in the order of companionPaths(); nothing where
    /// there was no such file.
    std::vector<std::optional<SourceRecord>> sources;
    /// Whether the sources had been as they were for so long that a later change shows in their
    /// marks.
    bool settled = false;
    OutputMark mark;
};

/// Without the line's end.
std::string lineOf(const JournalEntry& entry);
/// \return nothing for what a killed run or a full disk left of a line
/// \throws StatementFailed for a whole line that is none of a journal
std::optional<JournalEntry> entryOfLine(std::string_view line);

/// A file of JSON lines to which runs append, several at once if need be, and from which the last
/// line on an output counts. Its first line says that it is a journal.
class Journal {
  public:
    enum class Use { append, look };

    /// \param use  to append makes the file where there is none; to look writes nothing
    /// \throws Refusal (nothingStarts) where it cannot be used, or is a file of another kind,
    ///         which is left as it is
    Journal(std::string path, Use use);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Gives every whole line in its order.
    /// \throws Refusal (nothingStarts) where it cannot be read, or a line is none of a journal
    void read(const std::function<void(JournalEntry)>& each) const;
    /// Appends a line, on a line of its own whatever stands at the end.
    void append(const JournalEntry& entry);
    Use use() const { return use_; }
    /// Whether every line was taken.
    bool isWhole() const { return whole_; }

  private:
    [[noreturn]] void refuse(const std::string& why) const;
    /// Whether the first line stands there whole. \throws Refusal where the file is of another kind
    bool hasHeader() const;
    bool write(const std::string& line) const;

    std::string path_;
    Use use_;
    Descriptor file_;
    bool whole_ = true;
    std::chrono::steady_clock::time_point synced_;
};

}  // namespace tessarine
