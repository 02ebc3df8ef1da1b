#pragma once

namespace tessarine {

/// Has SIGINT, SIGTERM and SIGHUP ask the run to stop after the picture under way; a second one, of
/// whatever kind, ends the program at once; the same one again within 100 ms counts as the first.
/// A signal that was ignored when the program started
/// stays ignored. Writing to a closed pipe or past a file limit fails instead of ending the
/// program.
void listenToSignals();

/// Whether the run was asked to stop.
bool interrupted();

/// Whether it was SIGTERM that asked.
bool terminated();

/// Gives standard input, output and error a place where they were closed, so that no picture file
/// takes theirs.
void openStandardFiles();

}  // namespace tessarine
