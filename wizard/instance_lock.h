#pragma once

#include <string>

namespace tessarine {

/// Tells whether another instance of the program runs for this user. The system itself takes the
/// lock back when a process ends, however it ends.
class InstanceLock {
  public:
    /// Holds the lock from now on. Where the file cannot be made there is no other instance.
    /// \param path  of a file that all instances know, made if it is missing
    explicit InstanceLock(const std::string& path);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// Whether another instance held the lock when this one began.
    bool othersRun() const { return othersRun_; }

    /// The file for the user who runs this process.
    static std::string usersFile();

  private:
    int file_ = -1;
    bool othersRun_ = false;
};

}  // namespace tessarine
