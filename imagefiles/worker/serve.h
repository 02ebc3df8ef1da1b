#pragma once

#include <cstdint>

#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/messages.h"
#include "imagefiles/worker/request_limits.h"
#include "pixels/pixel_buffer.h"

namespace tessarine {

/// What stands in the way of a helper's work, where its reader wants to see it fail.
class Interference {
  public:
    virtual ~Interference() = default;
    /// Before a picture is decoded, under its limits. \return whether the request is dealt with
    virtual bool atReading(int socket, const ReadRequest& request, Bytes file) = 0;
    /// Before a picture is encoded.
    virtual bool atWriting(int socket, const WriteRequest& request, const PixelBuffer& picture) = 0;
};

/// How a helper serves.
struct Service {
    RequestLimits limits;
    /// It ends after so many requests, and once what decoders lost of memory adds up.
    uint32_t mostRequests = 2000;
    size_t mostLostBytes = size_t{64} << 20;
    Interference* interference = nullptr;
};

/// Why serving ended.
enum class ServiceEnd {
    closed,   ///< the program is gone, or wants no more
    renewal,  ///< it has served long enough
    refused,  ///< the program sent what is no request
};

/// Serves the requests that come over a socket, one after the other. Between two of them nothing is
/// open or mapped but a few of the program's blocks. What comes is believed in nothing that could
/// harm this process.
ServiceEnd serve(int socket, Service service);

}  // namespace tessarine
