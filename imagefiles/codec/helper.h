#pragma once

#include <memory>
#include <string>

namespace tessarine {

/// What a helper process reads: metafiles are drawn by other libraries than pictures are decoded
/// by.
enum class HelperKind { files, drawing };

/// How a helper process ended.
struct HelperEnd {
    enum class How {
        unknown,   ///< not by itself, or somebody else took note of it
        exited,    ///< by itself, with `number` as its status
        signalled  ///< by the signal `number`
    };
    How how = How::unknown;
    int number = 0;

    /// For want of time.
    bool isOutOfTime() const;
    /// "ended with status 3", "was ended by SIGSEGV (Segmentation fault)".
    std::string inWords() const;
};

/// One who reads and writes pictures for us, at the other end of a socket. It is gone with this
/// object.
class Helper {
  public:
    virtual ~Helper() = default;

    virtual int socket() const = 0;
    /// Waits a moment for its end, then ends it. \return how it ended, if it did so by itself; to
    /// be called once
    virtual HelperEnd awaitEnd() = 0;
    /// Ends it at once.
    virtual void kill() = 0;
};

}  // namespace tessarine
