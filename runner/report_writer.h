#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "batch/run_report.h"
#include "runner/telling_file.h"

namespace tessarine {

/// A report's line of an object; bytes of a path that are no UTF-8 become replacement characters.
std::string reportLine(const nlohmann::ordered_json& object);

/// Counts of a run.
struct RunCounts {
    int64_t saved = 0;
    int64_t kept = 0;
    int64_t failed = 0;

    int64_t all() const { return saved + kept + failed; }
    void count(PictureReport::Status status);
};

/// What the last line of a report tells beside the counts.
struct RunSummary {
    int64_t pictures = 0;  ///< that the run was to do
    int64_t basket = 0;    ///< in the whole basket; more than `pictures` where this was a share
    std::string shard;     ///< which share, as K/N; empty for the whole basket
    int64_t ms = 0;
    bool interrupted = false;
};

/// Writes a run's report as JSON lines: one object a picture, and a last one with the summary.
/// Each line is written by itself, so that a killed run leaves a report of what it did, and a disk
/// that takes none for a while leaves the others whole.
class ReportWriter {
  public:
    /// \param target  a file; "-" for standard output; empty for none
    /// \throws Refusal (nothingStarts) where the file cannot be written
    explicit ReportWriter(const std::string& target) : file_("--report", target) {}

    /// Takes away an older report. Comes before the first line.
    /// \throws Refusal (nothingStarts)
    void beginAnew() { file_.beginAnew(); }
    void write(const PictureReport& entry);
    /// \return whether the whole report was taken
    bool writeSummary(const RunCounts& counts, const RunSummary& summary);
    /// A line as it is, without its end.
    void writeLine(const std::string& line);
    bool isWhole() const { return file_.isWhole(); }

  private:
    TellingFile file_;
};

}  // namespace tessarine
