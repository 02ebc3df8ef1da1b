#include "runner/report_writer.h"

#include <cerrno>
#include <cstring>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "runner/refusal.h"

namespace tessarine {

std::string reportLine(const nlohmann::ordered_json& object) {
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

void RunCounts::count(PictureReport::Status status) {
    switch (status) {
        case PictureReport::Status::saved:
            ++saved;
            break;
        case PictureReport::Status::kept:
            ++kept;
            break;
        case PictureReport::Status::failed:
            ++failed;
            break;
    }
}

ReportWriter::ReportWriter(const std::string& target) {
    if (target.empty()) return;
    file_ = target == "-" ? stdout : std::fopen(target.c_str(), "we");
    if (file_ == nullptr)
        throw Refusal(ExitStatus::nothingStarts, fmt::format("--report: '{}' cannot be written: {}",
                                                             target, std::strerror(errno)));
}

ReportWriter::~ReportWriter() {
    if (file_ != nullptr && file_ != stdout) std::fclose(file_);
}

void ReportWriter::write(const PictureReport& entry) {
    writeLine(reportLine({{"number", entry.number},
                          {"input", entry.input},
                          {"output", entry.output},
                          {"status", statusText(entry.status)},
                          {"error", entry.error},
                          {"message", entry.message},
                          {"width", entry.width},
                          {"height", entry.height},
                          {"depth", entry.depth},
                          {"ms", entry.ms},
                          {"bytes", entry.bytes}}));
}

bool ReportWriter::writeSummary(const RunCounts& counts, const RunSummary& run) {
    nlohmann::ordered_json summary = {
        {"pictures", run.pictures}, {"saved", counts.saved},          {"kept", counts.kept},
        {"failed", counts.failed},  {"interrupted", run.interrupted}, {"ms", run.ms},
        {"basket", run.basket}};
    if (!run.shard.empty()) summary["shard"] = run.shard;
    writeLine(reportLine({{"summary", std::move(summary)}}));
    return whole_;
}

void ReportWriter::writeLine(const std::string& line) {
    if (file_ == nullptr) return;
    const bool taken = std::fputs((line + "\n").c_str(), file_) >= 0 && std::fflush(file_) == 0;
    whole_ = whole_ && taken;
}

}  // namespace tessarine
