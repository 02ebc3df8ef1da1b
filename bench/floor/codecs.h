#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <turbojpeg.h>
#include <vector>

#include "arithmetic.h"

namespace floor_program {

/// A picture file could not be read, decoded, encoded or written; the text names the file.
struct Failed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a whole file, in place of what `bytes` held.
void readFile(const std::string& path, std::vector<uint8_t>& bytes);
void writeFile(const std::string& path, const uint8_t* bytes, size_t count);

/// Reads and writes JPEG with codecs and buffers that serve all pictures of a thread.
class JpegCodec {
  public:
    JpegCodec();
    ~JpegCodec();
    JpegCodec(const JpegCodec&) = delete;
    JpegCodec& operator=(const JpegCodec&) = delete;

    /// Decodes into `pixels`, which grows where it is too small.
    View decode(const std::string& path, std::vector<uint8_t>& pixels);
    /// Quality 75, one colour sample to four pixels.
    void encode(View picture, const std::string& path);

  private:
    tjhandle reader_;
    tjhandle writer_;
    std::vector<uint8_t> file_;
    std::vector<uint8_t> encoded_;
};

/// Writes PNG of three channels at the library's own settings.
class PngWriter {
  public:
    void encode(View picture, const std::string& path);

  private:
    std::vector<uint8_t> encoded_;
};

}  // namespace floor_program
