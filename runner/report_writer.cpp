#include "runner/report_writer.h"

#include <nlohmann/json.hpp>

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
    return isWhole();
}

void ReportWriter::writeLine(const std::string& line) { file_.add(line + "\n"); }

}  // namespace tessarine
