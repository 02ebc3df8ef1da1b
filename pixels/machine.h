#pragma once

#include <cstdint>
#include <string>

// What of the machine this process may use. A container or a service is often given a part of it,
// which the kernel tells in the files of control groups, of their first version and their second.

namespace tessarine {

/// Processors that may work for this process at the same time, at least 1: those that it may run
/// on, and no more than its control groups' share of time comes to, a part of one counted as one.
/// \param root  before the paths of the kernel's files
int availableCores(const std::string& root = {});

/// Bytes of memory that this process may still take: what the machine has available, and no more
/// than its control groups leave beyond what they hold, files that can be read again left out.
uint64_t availableMemory(const std::string& root = {});

/// Bytes of memory that this process may ever use: the machine's, or what its control groups allow.
uint64_t wholeMemory(const std::string& root = {});

/// Lets this process have as many files open as it may allow itself: each picture in flight has
/// about eight, and the usual limit of 1024 is soon reached where there are many processors.
void allowManyFiles();

}  // namespace tessarine
