#pragma once

#include <string>

#include "imagefiles/format_bridges.h"

namespace tessarine {

/// Starts the file library and has the messages of this thread's calls kept in
/// `format.lastFormatError`. Every call is to be matched by one of CloseImageLibrary on the same
/// thread, and `format` has to live until then.
void InitImageLibrary(mFormat& format);

/// The library's FreeImage_DeInitialise, safe beside other threads' calls.
void CloseImageLibrary();

/// Whether a message of the file library tells of memory that it did not get.
bool tellsOfNoMemory(const std::string& message);

/// The file library is open, and its messages go to `format`, while this lives.
class OpenLibrary {
  public:
    explicit OpenLibrary(mFormat& format) { InitImageLibrary(format); }
    ~OpenLibrary() { CloseImageLibrary(); }
    OpenLibrary(const OpenLibrary&) = delete;
    OpenLibrary& operator=(const OpenLibrary&) = delete;
};

}  // namespace tessarine
