#pragma once

#include "imagefiles/image_files.h"

namespace tessarine {

/// The file library is open, and its messages go to `format`, while this lives.
class OpenLibrary {
  public:
    explicit OpenLibrary(mFormat& format) { InitImageLibrary(format); }
    ~OpenLibrary() { CloseImageLibrary(); }
    OpenLibrary(const OpenLibrary&) = delete;
    OpenLibrary& operator=(const OpenLibrary&) = delete;
};

}  // namespace tessarine
