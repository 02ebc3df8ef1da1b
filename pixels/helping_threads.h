#pragma once

namespace tessarine {

/// The calling thread is one that helps others: it is kept off their processors from now on.
void joinHelpingThreads();

/// Lets the helping threads wake on any processor but the one that the calling thread runs on. A
/// kernel may put them there although others idle: in a virtual machine an idle processor looks
/// like one that the host has taken away. The two would then take turns for some milliseconds,
/// which is longer than most filters take.
void keepHelpingThreadsOff();

}  // namespace tessarine
