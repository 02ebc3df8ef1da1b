#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace tessarine {

/// A file that is being written, by whatever library. It remembers the first thing that went
/// wrong, so that a library that does not look at its own writes is found out at the end.
class OutputFile {
  public:
    OutputFile() = default;
    /// A file that was made here and not finished is removed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Makes the file, or empties one that stands there.
    bool create(const std::string& path);
    /// Writes into a file that is open for reading and writing, from where it stands, and closes
    /// it in any case. Its name stands in messages only: the file is never removed, whoever opened
    /// it sees to that.
    bool adopt(int file, const std::string& name);
    bool isOpen() const { return file_ != nullptr; }
    /// What its messages call it.
    const std::string& name() const { return path_; }
    /// For another process that is to write it, while nothing is written here; -1 while not open.
    int descriptor() const { return isOpen() ? fileno(file_) : -1; }

    // A library may go on although it was told that the file cannot be made: on a file that is
    // not open these do nothing and fail.

    /// \return how many bytes were taken; fewer than `count` is a failure.
    size_t write(const void* bytes, size_t count);
    size_t read(void* bytes, size_t count);
    bool seek(int64_t offset, int origin = SEEK_SET);
    int64_t tell() const;
    /// What lies behind the place where it stands goes.
    bool cutHere();

    /// Closes the file. Where anything failed, one that was made here is removed.
    /// \return whether all of it stands on the disk as far as the system says
    bool finish();
    /// Closes the file and removes one that was made here.
    void discard();

    /// The first failure in words; empty while there is none.
    const std::string& failure() const { return failure_; }
    /// Size in bytes of the finished file.
    int64_t size() const { return size_; }

  private:
    void start(std::FILE* file, const std::string& path, bool madeHere);
    void fail(const std::string& what);

    std::string path_;
    bool madeHere_ = false;
    std::FILE* file_ = nullptr;
    std::string failure_;
    int64_t size_ = 0;
};

}  // namespace tessarine
