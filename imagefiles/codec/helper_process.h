#pragma once

#include <memory>
#include <string>
#include <sys/types.h>

#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/helper.h"

namespace tessarine {

/// A helper that is a process of its own. It inherits nothing but its socket: no file, no standard
/// stream, no signal that is ignored here, and of the environment only what fonts, texts and
/// libraries go by. SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGTSTP, which reach all processes of a
/// terminal, do not reach it.
///
/// SIGCHLD is no longer ignored in this program once there was one.
///
/// It ends when the thread that starts it ends: start helpers on a thread that lives as long as the
/// program.
class HelperProcess : public Helper {
  public:
    /// Does not wait until it is ready.
    /// \param program  path of the helper program
    /// \throws StatementFailed where no process can be made of it
    HelperProcess(const std::string& program, HelperKind kind);
    ~HelperProcess() override { kill(); }
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    int socket() const override { return socket_.get(); }
    HelperEnd awaitEnd() override;
    void kill() override;
    /// 0 once it has ended.
    pid_t process() const { return process_; }

  private:
    Descriptor socket_;
    pid_t process_ = 0;
};

/// Where the helper program stands: beside this program, or where a build or an installation puts
/// it.
/// \throws StatementFailed, with the program's name and where it was looked for
std::string helperProgram();

}  // namespace tessarine
