#pragma once

#include <cstdint>

#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/limits.h"

namespace tessarine {

/// Holds this process to what one picture may take. What runs out of processor time or of time on
/// the wall ends the process by a signal; memory beyond the limit is not to be had.
class RequestLimits {
  public:
    /// Where nothing is held to anything: a process that does more than serving.
    RequestLimits() = default;
    static RequestLimits ofThisProcess();

    /// Whether what is kept from picture to picture takes half of what a picture may take.
    bool isTight(uint64_t ceiling) const;
    /// From here on a request is served.
    /// \param ceiling  bytes of address space beyond those of the idle process, all that is kept
    ///                 included
    void begin(uint64_t ceiling);
    /// The limits of the request, counted from now on; called again they replace the former ones.
    /// \param wishedSeconds  0 for time in proportion
    void set(uint64_t pixels, double wishedSeconds, uint64_t ceiling);
    /// The request is done.
    void end();

    /// The clock on the wall stands while the program is asked.
    void pauseClock();
    void resumeClock();

    /// Address space of this process.
    uint64_t addressSpace() const;

  private:
    void limitMemory(uint64_t bytes) const;
    void limitSeconds(double processor, double wall) const;

    bool enabled_ = false;
    Descriptor figures_;  ///< the process's own, which no one can open later
    uint64_t base_ = 0;
    double secondsLeft_ = 0;
};

}  // namespace tessarine
