#pragma once

#include <string>
#include <string_view>

#include "imagefiles/codec/channel.h"

namespace tessarine {

/// A file that a run writes beside its outputs, in pieces such as lines, each of which is there
/// whole as soon as it is written, or not at all: what a disk without room took of one is taken
/// back, so that the next one follows behind the last whole one.
class TellingFile {
  public:
    /// Opens a file and leaves what stands in it.
    /// \param option  on the command line, for what is told of it
    /// \param target  "-" for standard output, where the option knows it; empty for none
    /// \throws Refusal (nothingStarts) where it cannot be written
    TellingFile(const std::string& option, const std::string& target);
    ~TellingFile();
    TellingFile(const TellingFile&) = delete;
    TellingFile& operator=(const TellingFile&) = delete;

    bool isOpen() const { return static_cast<bool>(file_); }
    /// Takes away what stood in it, once nothing keeps the run from starting any more.
    /// \throws Refusal (nothingStarts)
    void beginAnew();
    void add(std::string_view piece);
    /// Whether every piece was taken.
    bool isWhole() const { return whole_; }

  private:
    void takeBack(size_t bytes) const;

    std::string option_;
    std::string target_;
    Descriptor file_;
    bool whole_ = true;
};

}  // namespace tessarine
