#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "sample_files.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

enum class Outcome { refused, read, died, outOfTime };

/// Files over which a library ends its process. What is read by the room's own decoders is never
/// one of them.
const std::map<std::string, std::string>& libraryDeaths() {
    static const std::map<std::string, std::string> files{
        {"twelvemonkeys_gimp-32x32-packbits-overflow.psd",
         "FreeImage writes past a row of a run-length coded Photoshop picture"},
    };
    return files;
}

// What a sanitizer ends a process with is 1 or 66.
constexpr int hasRefused = 10;
constexpr int hasRead = 11;

/// Loads a file in a process of its own, with 10 seconds and 4 gigabytes.
Outcome loadApart(const fs::path& path, const std::string& extension) {
    const pid_t child = fork();
    if (child == 0) {
        const rlimit time{10, 10};
        setrlimit(RLIMIT_CPU, &time);
        const rlimit core{0, 0};
        setrlimit(RLIMIT_CORE, &core);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        const rlimit memory{rlim_t{4} << 30, rlim_t{4} << 30};
        setrlimit(RLIMIT_AS, &memory);
#endif
        alarm(20);
        _exit(loadFile(path, extension).isThere ? hasRead : hasRefused);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == hasRefused) return Outcome::refused;
    if (WIFEXITED(status) && WEXITSTATUS(status) == hasRead) return Outcome::read;
    const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return signal == SIGXCPU || signal == SIGALRM || signal == SIGKILL ? Outcome::outOfTime
                                                                       : Outcome::died;
}

TEST(Malformed, NoFileBringsTheRoomsOwnDecodersDown) {
    const fs::path folder = sharedFolder() / "corpus" / "malformed";
    if (!fs::exists(folder)) GTEST_SKIP() << "the damaged sample files are not here";
    std::map<Outcome, size_t> counts;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        std::string extension = entry.path().extension().string().substr(1);
        for (char& c : extension)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const Outcome outcome = loadApart(entry.path(), extension);
        ++counts[outcome];
        if (libraryDeaths().contains(name)) continue;
        EXPECT_NE(outcome, Outcome::died) << name;
// Both slow everything down, and know no limit of memory.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        EXPECT_NE(outcome, Outcome::outOfTime) << name;
#endif
    }
    std::printf("%zu refused, %zu read, %zu died, %zu out of time\n", counts[Outcome::refused],
                counts[Outcome::read], counts[Outcome::died], counts[Outcome::outOfTime]);
    EXPECT_GT(counts[Outcome::refused], 50u);
}

}  // namespace
}  // namespace tessarine::tests
