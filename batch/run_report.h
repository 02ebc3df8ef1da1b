#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tessarine {

/// What became of one picture of a run. Data for people and programs; the run itself never looks
/// at it.
struct PictureReport {
    enum class Status { saved, kept, failed };

    int32_t number = 0;  ///< place in the basket, from 1
    std::string input;
    std::string output;
    Status status = Status::failed;
    std::string error;  ///< a class of errorClass(); empty for none
    /// In words; empty for none. Of a saved picture: what was left out of its metadata.
    std::string message;
    int32_t width = 0;  ///< pixels as read, and turned upright if that was wished; 0 for nothing
    int32_t height = 0;
    int32_t depth = 0;  ///< bits per pixel of the file
    int64_t ms = 0;     ///< time from reading to written
    int64_t bytes = 0;  ///< size of the output
};

/// The record of a run: one entry for each picture that was begun, in the order of their ends.
class RunReport {
  public:
    /// Called with each entry as soon as it stands.
    std::function<void(const PictureReport&)> onEntry;

    void add(PictureReport entry);
    void clear() { entries_.clear(); }
    const std::vector<PictureReport>& entries() const { return entries_; }

  private:
    std::vector<PictureReport> entries_;
};

/// "saved", "kept" or "failed".
std::string statusText(PictureReport::Status status);

}  // namespace tessarine
