#pragma once

#include <cstddef>

namespace tessarine {

// The heap of a helper. Its program brings functions of its own for what malloc and its kin do
// (heap.cpp), which keep these rules:
//
// - Fresh memory reads 0, whatever lay there before. Decoders of damaged files show memory that
//   they never wrote; like this they show the same in each run, and nothing of another picture.
//   Encoders have no damaged files: while a picture is written, large blocks are left as they are.
// - Freed memory is kept for the next picture, as the first touch of a fresh page costs more than
//   decoding into it.
// - A request for memory that is refused is remembered: few decoders tell it from damage.

/// Keeps freed memory from here on. Early in the program.
void setUpHeap();
/// Whether large blocks are to read 0 too; they are at first.
void clearLargeBlocks(bool wanted);
/// Between two pictures: gives back what is free beyond a bound.
void trimHeap();
/// Gives back all that is free.
void emptyHeap();
/// Bytes that are allocated at this moment.
size_t heapInUse();

/// Whether memory was refused since this was asked last.
bool memoryWasRefused();

}  // namespace tessarine
