#include "runner/merged_report.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "runner/messages.h"
#include "runner/report_writer.h"
#include "runner/shards.h"

namespace tessarine {

namespace {

using nlohmann::ordered_json;

[[noreturn]] void refuse(const std::string& why) {
    throw Refusal(ExitStatus::nothingStarts, "--merge-reports: " + why);
}

/// Pictures of a run have numbers from 1 to this.
constexpr int64_t highestNumber = std::numeric_limits<int32_t>::max();

/// Thrown where a line is none of a report.
struct NoReportLine {};

/// What one line tells of a picture.
struct Told {
    PictureReport::Status status = PictureReport::Status::failed;
    std::string line;
};

PictureReport::Status statusOf(const std::string& text) {
    using Status = PictureReport::Status;
    for (const Status status : {Status::saved, Status::kept, Status::failed})
        if (text == statusText(status)) return status;
    throw NoReportLine();
}

/// Numbers in words, neighbours as "from-to"; the first of many.
std::string rangesOf(const std::vector<int64_t>& numbers) {
    constexpr int mostRanges = 20;
    std::string text;
    size_t at = 0;
    for (int ranges = 0; at < numbers.size() && ranges < mostRanges; ++ranges) {
        size_t end = at + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1)
            ++end;
        if (!text.empty()) text += ", ";
        text += end - at == 1 ? fmt::format("{}", numbers[at])
                              : fmt::format("{}-{}", numbers[at], numbers[end - 1]);
        at = end;
    }
    if (at < numbers.size()) text += fmt::format(" and {} more", numbers.size() - at);
    return text;
}

class MergedReport {
  public:
    void addFile(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::error_code ignored;
        if (!file || std::filesystem::is_directory(path, ignored))
            refuse(fmt::format("'{}' cannot be read; expected a report", path));
        path_ = path;
        lineNumber_ = 0;
        for (std::string line; std::getline(file, line);) {
            ++lineNumber_;
            try {
                addLine(line);
            } catch (const NoReportLine&) {
                takeForCutOff(line, file.eof());
            } catch (const ordered_json::exception&) {
                takeForCutOff(line, file.eof());
            }
        }
        if (file.bad()) refuse(fmt::format("'{}' cannot be read to its end", path));
        ++files_;
    }

    /// Writes it. \return whether it was taken whole
    bool write(const std::string& target) {
        ReportWriter report(target.empty() ? "-" : target);
        report.beginAnew();
        const int64_t basket = basketSize();
        std::vector<int64_t> missing;
        int64_t next = 1;
        for (const auto& [number, told] : pictures_) {
            for (; next < number; ++next)
                missing.push_back(next);
            ++next;
            counts_.count(told.status);
            report.writeLine(told.line);
        }
        for (; next <= basket; ++next)
            missing.push_back(next);
        missing_ = std::move(missing);
        ordered_json summary = {{"pictures", basket},
                                {"saved", counts_.saved},
                                {"kept", counts_.kept},
                                {"failed", counts_.failed},
                                {"interrupted", !missing_.empty()},
                                {"ms", ms_},
                                {"basket", basket},
                                {"missing", missing_.size()},
                                {"missing_numbers", missing_},
                                {"reports", files_}};
        if (shards_) {
            summary["shards"] = *shards_;
            summary["unfinished_shards"] = unfinishedShards();
        }
        report.writeLine(reportLine({{"summary", summary}}));
        return report.isWhole();
    }

    const RunCounts& counts() const { return counts_; }
    const std::vector<int64_t>& missing() const { return missing_; }
    int64_t files() const { return files_; }
    bool knowsItsEnd() const { return basket_.has_value(); }
    /// How many pictures there are; where no report tells, as many as the highest number.
    int64_t basketSize() const {
        return basket_.value_or(pictures_.empty() ? 0 : pictures_.rbegin()->first);
    }

  private:
    std::string place() const { return fmt::format("line {} of '{}'", lineNumber_, path_); }

    /// Where a run was killed while it wrote, the file ends within a line, or with that line's
    /// place and no bytes in it.
    void takeForCutOff(const std::string& line, bool hasNoEnd) const {
        const std::string begun = line.substr(0, line.find('\0'));
        const auto begins = [&](const std::string& whole) {
            return begun.starts_with(whole) || whole.starts_with(begun);
        };
        if (hasNoEnd && (begins(R"({"number":)") || begins(R"({"summary":)"))) return;
        refuse(fmt::format("{} is no line of a report", place()));
    }

    void addLine(const std::string& line) {
        const ordered_json object = ordered_json::parse(line);
        if (!object.is_object()) throw NoReportLine();
        if (object.contains("summary"))
            addSummary(object.at("summary"));
        else
            addPicture(object, line);
    }

    /// The shards that a further run has something to do for.
    std::set<int32_t> unfinishedShards() const {
        std::set<int32_t> unfinished;
        for (const int64_t number : missing_)
            unfinished.insert(Shard::ownerOf(static_cast<size_t>(number - 1), *shards_));
        for (const auto& [number, told] : pictures_)
            if (told.status == PictureReport::Status::failed)
                unfinished.insert(Shard::ownerOf(static_cast<size_t>(number - 1), *shards_));
        return unfinished;
    }

    void addSummary(const ordered_json& summary) {
        if (summary.contains("shard")) {
            const auto shard = Shard::fromText(summary.at("shard").get<std::string>());
            if (!shard) throw NoReportLine();
            shards_ = shard->count;
        }
        ms_ += summary.at("ms").get<int64_t>();
        // Numbers that no report has are listed, up to what is told here.
        const auto& told = summary.at("basket");
        if (!told.is_number_integer()) throw NoReportLine();
        const auto basket = told.get<int64_t>();
        if (basket < 0 || basket > highestNumber) throw NoReportLine();
        if (basket_ && *basket_ != basket)
            refuse(
                fmt::format("{} tells of a basket of {} pictures, a report before it of {}; "
                            "expected reports of one basket",
                            place(), basket, *basket_));
        basket_ = basket;
        refuseBeyondBasket();
    }

    void addPicture(const ordered_json& object, const std::string& line) {
        const auto number = object.at("number").get<int64_t>();
        if (number < 1 || number > highestNumber || !object.contains("input") ||
            !object.contains("output"))
            throw NoReportLine();
        const PictureReport::Status status = statusOf(object.at("status").get<std::string>());
        const auto [known, isNew] = pictures_.try_emplace(number, Told{status, line});
        if (isNew) return refuseBeyondBasket();
        const ordered_json before = ordered_json::parse(known->second.line);
        for (const char* what : {"input", "output"})
            if (before.at(what) != object.at(what))
                refuse(
                    fmt::format("{} tells of picture {} with the {} {}, a report before it with "
                                "{}; expected reports of one basket",
                                place(), number, what, reportLine(object.at(what)),
                                reportLine(before.at(what))));
        // In the order of the enumeration: what was saved tells more than that it was kept later.
        if (status <= known->second.status) known->second = {status, line};
    }

    void refuseBeyondBasket() const {
        if (basket_ && !pictures_.empty() && pictures_.rbegin()->first > *basket_)
            refuse(
                fmt::format("{} brings picture {} into a basket of {}; expected reports of one "
                            "basket",
                            place(), pictures_.rbegin()->first, *basket_));
    }

    std::string path_;
    int64_t lineNumber_ = 0;
    std::map<int64_t, Told> pictures_;
    std::optional<int64_t> basket_;
    std::optional<int32_t> shards_;  ///< how many, in the last report that tells
    int64_t ms_ = 0;
    int64_t files_ = 0;
    RunCounts counts_;
    std::vector<int64_t> missing_;
};

/// A report that is written over one that it is made of would be lost with it.
void protectReports(const CommandLine& line) {
    for (const std::string& source : line.reportsToMerge) {
        std::error_code ignored;
        if (!line.report.empty() && std::filesystem::equivalent(source, line.report, ignored))
            throw Refusal(ExitStatus::nothingStarts,
                          fmt::format("--report: '{}' is one of the reports to be merged; expected "
                                      "another file",
                                      line.report));
    }
}

}  // namespace

ExitStatus mergeReports(const CommandLine& line) {
    MergedReport merged;
    for (const std::string& path : line.reportsToMerge)
        merged.addFile(path);
    protectReports(line);
    if (merged.basketSize() == 0) refuse("the reports tell of no pictures");

    const bool told = merged.write(line.report);
    if (!told)
        complain(line.report.empty() || line.report == "-"
                     ? std::string("standard output takes no more")
                     : fmt::format("--report: '{}' could not be written whole", line.report));
    const size_t missing = merged.missing().size();
    if (missing > 0)
        complain(fmt::format("{} of {} pictures are in no report: {}", missing, merged.basketSize(),
                             rangesOf(merged.missing())));
    if (!merged.knowsItsEnd())
        complain(fmt::format("no report has a summary, so that there may be pictures behind {}",
                             merged.basketSize()));
    const RunCounts& counts = merged.counts();
    if (!line.quiet)
        writeToTerminal(fmt::format(
            "{} saved, {} kept, {} failed, {} missing of {} pictures in {} reports\n", counts.saved,
            counts.kept, counts.failed, missing, merged.basketSize(), merged.files()));
    const bool isComplete = counts.failed == 0 && missing == 0 && merged.knowsItsEnd() && told;
    return isComplete ? ExitStatus::done : ExitStatus::somePictures;
}

}  // namespace tessarine
