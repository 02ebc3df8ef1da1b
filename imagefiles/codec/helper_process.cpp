#include "imagefiles/codec/helper_process.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "pixels/failures.h"

namespace tessarine {

namespace {

constexpr const char* helperName = "tessarine-codec";

/// The helper's number of its socket, the first behind the standard streams.
constexpr int helperSocket = 3;

/// Whether a helper is to know a variable of our environment: where fonts and libraries are, which
/// language texts have, and what sanitizers are told.
bool isForHelper(std::string_view entry) {
    constexpr std::array<std::string_view, 14> wanted{"LANG=",
                                                      "LANGUAGE=",
                                                      "LC_",
                                                      "HOME=",
                                                      "XDG_CONFIG_HOME=",
                                                      "XDG_CACHE_HOME=",
                                                      "XDG_DATA_HOME=",
                                                      "XDG_DATA_DIRS=",
                                                      "FONTCONFIG_",
                                                      "LD_LIBRARY_PATH=",
                                                      "ASAN_OPTIONS=",
                                                      "LSAN_OPTIONS=",
                                                      "UBSAN_OPTIONS=",
                                                      "TSAN_OPTIONS="};
    for (const std::string_view name : wanted)
        if (entry.starts_with(name)) return true;
    return false;
}

/// What a new process is to find; freed at the end of the scope.
class SpawnOrders {
  public:
    explicit SpawnOrders(int socket) {
        ::posix_spawn_file_actions_init(&files_);
        ::posix_spawn_file_actions_adddup2(&files_, socket, helperSocket);
        for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
            ::posix_spawn_file_actions_addopen(&files_, stream, "/dev/null", O_RDWR, 0);
        // Libraries open files that they forget to have closed, and shells hand files on.
        ::posix_spawn_file_actions_addclosefrom_np(&files_, helperSocket + 1);

        ::posix_spawnattr_init(&attributes_);
        sigset_t ignoredHere;
        ::sigemptyset(&ignoredHere);
        for (const int signal :
             {SIGPIPE, SIGXFSZ, SIGXCPU, SIGCHLD, SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGSYS})
            ::sigaddset(&ignoredHere, signal);
        ::posix_spawnattr_setsigdefault(&attributes_, &ignoredHere);
        // Blocked from its first moment, before it can ignore them.
        sigset_t forTheProgram;
        ::sigemptyset(&forTheProgram);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP})
            ::sigaddset(&forTheProgram, signal);
        ::posix_spawnattr_setsigmask(&attributes_, &forTheProgram);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnOrders() {
        ::posix_spawnattr_destroy(&attributes_);
        ::posix_spawn_file_actions_destroy(&files_);
    }
    SpawnOrders(const SpawnOrders&) = delete;
    SpawnOrders& operator=(const SpawnOrders&) = delete;

    const posix_spawn_file_actions_t* files() const { return &files_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

  private:
    posix_spawn_file_actions_t files_{};
    posix_spawnattr_t attributes_{};
};

/// Whoever started this program may have had it ignore the ends of its children. The kernel would
/// then forget how helpers ended, and give their numbers away while they are still ours.
void keepEndsOfChildren() {
    struct sigaction atEnd {};
    if (::sigaction(SIGCHLD, nullptr, &atEnd) != 0) return;
    if (atEnd.sa_handler == SIG_IGN) ::signal(SIGCHLD, SIG_DFL);
}

HelperEnd endOf(int status) {
    if (WIFEXITED(status)) return {HelperEnd::How::exited, WEXITSTATUS(status)};
    if (WIFSIGNALED(status)) return {HelperEnd::How::signalled, WTERMSIG(status)};
    return {};
}

}  // namespace

bool HelperEnd::isOutOfTime() const {
    return how == How::signalled && (number == SIGXCPU || number == SIGALRM);
}

std::string HelperEnd::inWords() const {
    if (how == How::exited) return "ended with status " + std::to_string(number);
    if (how == How::unknown) return "ended the conversation";
    const char* name = ::sigabbrev_np(number);
    const char* words = ::sigdescr_np(number);
    if (name == nullptr || words == nullptr) return "was ended by signal " + std::to_string(number);
    return std::string("was ended by SIG") + name + " (" + words + ")";
}

HelperProcess::HelperProcess(const std::string& program, HelperKind kind) {
    keepEndsOfChildren();
    const auto refuse = [&](int error) {
        throw StatementFailed("the helper program '" + program +
                              "' cannot be started: " + std::strerror(error));
    };
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) refuse(errno);
    socket_ = Descriptor(ends[0]);
    const Descriptor theirs(ends[1]);

    const std::string number = std::to_string(helperSocket);
    const std::string parent = std::to_string(::getpid());
    const char* kindWord = kind == HelperKind::files ? "files" : "drawing";
    const std::array<char*, 5> arguments{
        const_cast<char*>(helperName), const_cast<char*>(number.c_str()),
        const_cast<char*>(kindWord), const_cast<char*>(parent.c_str()), nullptr};
    std::vector<char*> environment;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        if (isForHelper(*entry)) environment.push_back(*entry);
    environment.push_back(nullptr);

    const SpawnOrders orders(theirs.get());
    const int failure = ::posix_spawn(&process_, program.c_str(), orders.files(),
                                      orders.attributes(), arguments.data(), environment.data());
    if (failure == 0) return;
    process_ = 0;
    refuse(failure);
}

HelperEnd HelperProcess::awaitEnd() {
    using Clock = std::chrono::steady_clock;
    // Its end of the socket is closed when it is all but dead; one that closed it by itself waits
    // for nothing.
    const auto patience = Clock::now() + std::chrono::milliseconds(500);
    while (process_ != 0 && Clock::now() < patience) {
        int status = 0;
        const pid_t ended = ::waitpid(process_, &status, WNOHANG);
        if (ended == process_) {
            process_ = 0;
            return endOf(status);
        }
        if (ended < 0 && errno != EINTR) {
            process_ = 0;
            return {};
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill();
    return {};
}

void HelperProcess::kill() {
    if (process_ == 0) return;
    ::kill(process_, SIGKILL);
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = 0;
}

std::string helperProgram() {
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::path folder = fs::read_symlink("/proc/self/exe", failure).parent_path();
    for (const char* place : {".", "../lib/tessarine", "../imagefiles"}) {
        const fs::path path = (folder / place / helperName).lexically_normal();
        if (::access(path.c_str(), X_OK) == 0 && fs::is_regular_file(path, failure))
            return path.string();
    }
    throw StatementFailed(std::string("the helper program '") + helperName +
                          "' is missing; expected it beside this program, in " + folder.string() +
                          ", or in " + (folder / "../lib/tessarine").lexically_normal().string());
}

}  // namespace tessarine
