#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "batch/run_report.h"

namespace tessarine {

/// Counts of a run.
struct RunCounts {
    int64_t saved = 0;
    int64_t kept = 0;
    int64_t failed = 0;

    int64_t all() const { return saved + kept + failed; }
    void count(PictureReport::Status status);
};

/// Writes a run's report as JSON lines: one object a picture, and a last one with the summary.
/// Each line is flushed, so that a killed run leaves a report of what it did.
class ReportWriter {
  public:
    /// \param target  a file, which is written anew; "-" for standard output; empty for none
    /// \throws Refusal (nothingStarts) where the file cannot be written
    explicit ReportWriter(const std::string& target);
    ~ReportWriter();
    ReportWriter(const ReportWriter&) = delete;
    ReportWriter& operator=(const ReportWriter&) = delete;

    void write(const PictureReport& entry);
    /// \return whether the whole report was taken
    bool writeSummary(const RunCounts& counts, int64_t pictures, int64_t ms, bool interrupted);

  private:
    void writeLine(const std::string& line);

    std::FILE* file_ = nullptr;
    bool whole_ = true;
};

}  // namespace tessarine
