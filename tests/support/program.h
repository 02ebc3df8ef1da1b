#pragma once

#include <array>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tessarine::tests {

inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// A program under way.
class Running {
  public:
    Running(const std::vector<std::string>& words, const std::string& in, const std::string& out,
            const std::string& err) {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        const int written = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), written, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), written, 0600);
        std::vector<char*> argv;
        for (const std::string& word : words)
            argv.push_back(const_cast<char*>(word.c_str()));
        argv.push_back(nullptr);
        const int failure =
            posix_spawn(&process_, argv[0], &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (failure != 0) throw std::runtime_error(words[0] + " does not start");
    }

    void kill(int signal) const { ::kill(process_, signal); }
    pid_t process() const { return process_; }

    bool hasEnded() const {
        siginfo_t info{};
        return ::waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT) !=
                   0 ||
               info.si_pid != 0;
    }

    /// The exit status, or the number of the signal that ended it, negative.
    int wait() const {
        int status = 0;
        ::waitpid(process_, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    pid_t process_ = 0;
};

/// What a finished program left.
struct Finished {
    int status = 0;
    std::string out;
    std::string err;
};

/// Runs a program to its end. `scratch` is a folder for what it prints.
inline Finished runProgram(const std::vector<std::string>& words, const std::string& scratch,
                           const std::string& input = {}) {
    const std::string in = scratch + "/stdin.txt";
    const std::string out = scratch + "/stdout.txt";
    const std::string err = scratch + "/stderr.txt";
    writeFile(in, input);
    const int status = Running(words, in, out, err).wait();
    return {status, readFile(out), readFile(err)};
}

}  // namespace tessarine::tests
