#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

#include "imagefiles/codec/helper.h"

namespace tessarine {

/// "files" or "drawing".
std::optional<HelperKind> helperKindOf(std::string_view word);

// A helper gives up its rights in three steps; before the last its libraries make themselves ready.
// What the kernel does not grant is left out: the helper serves with what it has, and says so.

/// Ends this process when its parent ends. The parent is the thread that started it.
/// \return false where the parent is gone already
bool dieWithParent(pid_t parent);

/// Standard input, output and error lead nowhere; what a person presses on a terminal is for the
/// program alone; resources that pictures do not need are cut.
void renounceHabits();

/// No new rights, no files but those that are open or are passed, no other processes, no network.
/// A drawing helper may still read below the folders of fonts and libraries.
/// \return what was refused, in words, with commas between; empty where all was granted
std::string lockIn(HelperKind kind);

}  // namespace tessarine
