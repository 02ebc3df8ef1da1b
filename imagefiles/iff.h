#pragma once

#include <string_view>
#include <vector>

#include "imagefiles/decode.h"
#include "imagefiles/decoding.h"

namespace tessarine {

/// Walks over the chunks of an IFF form. The last one may be cut short.
class IffChunks {
  public:
    explicit IffChunks(Bytes form) : in_(form) {}

    /// \return false behind the last chunk
    bool next();
    std::string_view name() const { return name_; }
    Bytes data() const { return data_; }

  private:
    ByteReader in_;
    std::string_view name_;
    Bytes data_;
};

/// Undoes the run-length coding of IFF until `size` bytes are there. A run repeats `unit` bytes.
/// \throws StatementFailed where the data ends before
std::vector<uint8_t> unpackByteRuns(ByteReader& in, size_t size, size_t unit);

/// The pictures of an ILBM form (bit planes; palette, half-bright, hold-and-modify, palette
/// changes, 24 and 32 bits) or a PBM form (a byte a pixel), from behind the form's name.
Decoded decodeIlbm(Bytes form, bool bytePerPixel);

/// The true-colour pictures of a DEEP form.
Decoded decodeDeep(Bytes form);

/// What the headers of these forms promise.
PromisedSize promiseOfIlbm(Bytes form);
PromisedSize promiseOfDeep(Bytes form);

}  // namespace tessarine
