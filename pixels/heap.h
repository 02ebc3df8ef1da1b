#pragma once

namespace tessarine {

/// Has the heap keep up to 256 MiB of freed memory for the next buffers of up to 8 megapixels. The
/// first touch of fresh memory costs more than a filter takes for it. For programs, at their start.
void keepFreedMemory();

}  // namespace tessarine
