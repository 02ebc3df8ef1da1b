#include "runner/plan.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sys/stat.h>
#include <thread>

#include <fmt/format.h>

#include "batch/texts.h"
#include "imagefiles/codec/reading_ahead.h"
#include "imagefiles/format_table.h"
#include "pixels/failures.h"
#include "pixels/machine.h"
#include "runner/json_text.h"
#include "runner/messages.h"
#include "runner/pictures.h"
#include "runner/preparation.h"
#include "runner/recipe.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char* planMark = "tessarine-plan";

// ---- Words ----

constexpr std::array<std::pair<OnExists, const char*>, 3> wishes{
    {{OnExists::keep, "keep"}, {OnExists::overwrite, "overwrite"}, {OnExists::fail, "fail"}}};

const char* wordOf(OnExists wish) {
    return std::find_if(wishes.begin(), wishes.end(),
                        [&](const auto& each) { return each.first == wish; })
        ->second;
}

OnExists wishOf(const std::string& word) {
    for (const auto& [wish, text] : wishes)
        if (word == text) return wish;
    throw StatementFailed(
        fmt::format("'{}' is no value of onExists; expected keep, overwrite or fail", word));
}

/// What becomes of a picture's output: "make", "replace", "keep" or "fail".
std::string actionFor(const PictureTask& task, OnExists wish) {
    if (task.earlier == Earlier::upToDate) return "keep";
    std::error_code ignored;
    if (fs::is_directory(task.output, ignored)) return "fail";
    struct stat status {};
    if (::lstat(task.output.c_str(), &status) != 0) return "make";
    if (task.earlier == Earlier::stale || wish == OnExists::overwrite) return "replace";
    return wish == OnExists::keep ? "keep" : "fail";
}

std::string absolutePath(const std::string& path) {
    std::error_code failure;
    const fs::path whole = fs::absolute(path, failure);
    return failure ? path : whole.native();
}

// ---- Writing ----

/// The files of a picture as they are: itself, and those beside it.
Json jsonOfFiles(const std::string& input) {
    Json files = Json::array();
    for (const std::optional<FileMark>& mark : marksNow(input, extensionOf(input)))
        files.push_back(mark ? Json{{"bytes", mark->size}, {"modified", mark->changedContent}}
                             : Json());
    return files;
}

/// Looks at the headers of all pictures, several at a time.
std::vector<LookOutcome> lookAtAll(const RunOrder& order, int jobs, CodecFiles& files) {
    std::vector<LookOutcome> looked(order.tasks.size());
    const size_t threads = std::clamp<size_t>(
        jobs > 0 ? static_cast<size_t>(jobs) : static_cast<size_t>(availableCores()), 1,
        std::max<size_t>(order.tasks.size(), 1));
    files.prepareFor(threads);
    std::atomic<size_t> next = 0;
    const auto work = [&] {
        for (size_t i; (i = next++) < looked.size();) {
            const std::string& input = order.tasks[i].input;
            looked[i] = files.lookAt(input, extensionOf(input));
        }
    };
    std::vector<std::jthread> others;
    for (size_t i = 1; i < threads; ++i)
        others.emplace_back(work);
    work();
    return looked;
}

/// What a plan's last line tells.
struct Summary {
    std::map<std::string, int64_t> actions{{"make", 0}, {"replace", 0}, {"keep", 0}, {"fail", 0}};
    int64_t unreadable = 0;
    uint64_t pixels = 0;
};

/// The lines of a plan, as they go to their file.
class PlanFile {
  public:
    explicit PlanFile(const std::string& target)
        : file_(target == "-" ? stdout : std::fopen(target.c_str(), "we")) {
        if (file_ == nullptr)
            throw Refusal(ExitStatus::nothingStarts, fmt::format("--plan: '{}' cannot be written: "
                                                                 "{}",
                                                                 target, std::strerror(errno)));
    }
    ~PlanFile() {
        if (file_ != stdout) std::fclose(file_);
    }
    PlanFile(const PlanFile&) = delete;
    PlanFile& operator=(const PlanFile&) = delete;

    void write(const Json& object) {
        whole_ = std::fputs((oneLine(object) + "\n").c_str(), file_) >= 0 && whole_;
    }
    bool finish() { return std::fflush(file_) == 0 && whole_; }

  private:
    std::FILE* file_;
    bool whole_ = true;
};

Json settingsOf(const CommandLine& line, const cBatch& batch, const OutputNames& outputs) {
    const FormatRow& format = formatTable()[static_cast<size_t>(batch.cboFormat.index)];
    return {{planMark, 1},
            {"version", TESSARINE_VERSION},
            {"to", jsonOfText(absolutePath(outputs.destination()))},
            {"format", format.shortName},
            {"onExists", wordOf(line.onExists)},
            {"name", line.keepNames ? Json() : jsonOfText(line.name)},
            {"keepTree", line.keepTree},
            {"keepNames", line.keepNames},
            {"metadata", metadataAsJson(line.metadata)},
            {"functions", chainAsJson(batch)}};
}

// ---- Reading ----

/// One picture of a plan.
struct Planned {
    std::string input;
    std::string output;
    std::vector<std::optional<std::pair<int64_t, int64_t>>> files;  ///< bytes and time of change
};

Planned plannedOf(const Json& json, size_t place) {
    if (numberOfJson<size_t>(json.at("number")) != place + 1)
        throw StatementFailed("the numbers are not 1, 2, 3 and so on");
    Planned planned{textOfJson(json.at("input")), textOfJson(json.at("output")), {}};
    for (const Json& file : json.at("files")) {
        planned.files.emplace_back();
        if (!file.is_null())
            planned.files.back().emplace(numberOfJson<int64_t>(file.at("bytes")),
                                         numberOfJson<int64_t>(file.at("modified")));
    }
    if (planned.files.empty()) throw StatementFailed("a picture has no file");
    return planned;
}

void expectAsPlanned(const Planned& planned) {
    const auto refuse = [&](const char* what) {
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("--from-plan: '{}' {} since the plan was made; expected all "
                                  "pictures as they were, or a new plan",
                                  planned.input, what));
    };
    const FileMarks marks = marksNow(planned.input, extensionOf(planned.input));
    if (!marks.front() && planned.files.front()) refuse("has vanished");
    const bool isSame =
        std::equal(marks.begin(), marks.end(), planned.files.begin(), planned.files.end(),
                   [](const std::optional<FileMark>& now, const auto& then) {
                       return now.has_value() == then.has_value() &&
                              (!now || std::pair(now->size, now->changedContent) == *then);
                   });
    if (!isSame) refuse("has changed");
}

void takeSettings(const Json& json, cBatch& batch, CommandLine& line) {
    if (!json.is_object() || !json.contains(planMark))
        throw StatementFailed("it does not begin with the settings of a plan");
    if (json.at(planMark) != 1 || json.at("version") != TESSARINE_VERSION)
        throw StatementFailed(
            fmt::format("it was made by another version; expected {}", TESSARINE_VERSION));
    try {
        batch.cboFormat.index = formatRowOf(json.at("format").get<std::string>());
    } catch (const Refusal&) {
        throw StatementFailed("it names no output format");
    }
    takeChain(batch, json.at("functions"));
    line.to = textOfJson(json.at("to"));
    line.metadata = metadataOfJson(json.at("metadata"));
    line.onExists = wishOf(json.at("onExists").get<std::string>());
    batch.chkOverwrite = line.onExists == OnExists::overwrite ? 1 : 0;
}

}  // namespace

ExitStatus writePlan(const CommandLine& line, const cBatch& batch, const OutputNames& outputs,
                     const RunOrder& order, const Conflicts& conflicts, CodecFiles& files) {
    PlanFile file(line.plan);
    file.write(settingsOf(line, batch, outputs));
    const std::vector<LookOutcome> looked = lookAtAll(order, line.jobs, files);
    std::map<size_t, std::string> conflictAt(conflicts.begin(), conflicts.end());
    Summary summary;
    for (size_t i = 0; i < order.tasks.size(); ++i) {
        const PictureTask& task = order.tasks[i];
        const LookOutcome& look = looked[i];
        const std::string action = actionFor(task, order.onExists);
        const bool isReadable = look.error == FileError::none;
        const uint64_t pixels =
            static_cast<uint64_t>(look.width) * static_cast<uint64_t>(look.height);
        ++summary.actions[action];
        summary.pixels += pixels;
        summary.unreadable += isReadable ? 0 : 1;
        Json picture = {
            {"number", task.number},
            {"input", jsonOfText(absolutePath(task.input))},
            {"output", jsonOfText(absolutePath(task.output))},
            {"action", action},
            {"upToDate", task.earlier == Earlier::upToDate},
            {"files", jsonOfFiles(task.input)},
            {"width", look.width},
            {"height", look.height},
            {"pixels", pixels},
            {"error", errorClass(look.error)},
            {"message", look.message},
        };
        if (!isReadable)
            complain(fmt::format("{}: {}: {}", task.input, errorClass(look.error), look.message));
        const auto conflict = conflictAt.find(i);
        if (conflict != conflictAt.end()) {
            picture["conflict"] = conflict->second;
            complain(conflict->second);
        }
        file.write(picture);
    }
    const auto& actions = summary.actions;
    file.write({{"summary",
                 {{"pictures", order.tasks.size()},
                  {"make", actions.at("make")},
                  {"replace", actions.at("replace")},
                  {"keep", actions.at("keep")},
                  {"fail", actions.at("fail")},
                  {"unreadable", summary.unreadable},
                  {"conflicts", conflictAt.size()},
                  {"pixels", summary.pixels}}}});
    const bool taken = file.finish();
    if (!taken) complain(fmt::format("--plan: '{}' could not be written whole", line.plan));
    if (!line.quiet)
        writeToTerminal(fmt::format(
            "{} to make, {} to replace, {} to keep, {} to fail of {} pictures; {} unreadable, {} "
            "in conflict, {:.1f} megapixels\n",
            actions.at("make"), actions.at("replace"), actions.at("keep"), actions.at("fail"),
            order.tasks.size(), summary.unreadable, conflictAt.size(),
            static_cast<double>(summary.pixels) / 1e6));
    return taken && conflictAt.empty() ? ExitStatus::done : ExitStatus::somePictures;
}

OutputNames takePlan(cBatch& batch, CommandLine& line) {
    const auto refuse = [&](const std::string& why) {
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("--from-plan: '{}' cannot be run: {}", line.fromPlan, why));
    };
    errno = 0;
    std::ifstream lines(line.fromPlan, std::ios::binary);
    std::error_code ignored;
    if (!lines || fs::is_directory(line.fromPlan, ignored))
        refuse(errno != 0 ? std::strerror(errno) : "it is a folder");
    std::vector<std::string> outputs;
    bool isWhole = false;
    size_t number = 0;
    try {
        for (std::string text; std::getline(lines, text);) {
            ++number;
            if (isWhole) throw StatementFailed("it goes on behind its summary");
            const Json json = Json::parse(text);
            if (number == 1) {
                takeSettings(json, batch, line);
            } else if (json.contains("summary")) {
                const Json& summary = json.at("summary");
                if (numberOfJson<int64_t>(summary.at("conflicts")) != 0)
                    refuse("it has conflicts; expected a plan without");
                if (numberOfJson<size_t>(summary.at("pictures")) != outputs.size())
                    throw StatementFailed("pictures are missing before it");
                isWhole = true;
            } else {
                const size_t place = outputs.size();
                Planned planned = plannedOf(json, place);
                if (!line.shard || Shard::ownerOf(place, line.shard->count) == line.shard->index)
                    expectAsPlanned(planned);
                batch.lvSelected.push_back(basketItem(planned.input));
                outputs.push_back(std::move(planned.output));
            }
        }
    } catch (const StatementFailed& failure) {
        refuse(fmt::format("line {}: {}", number, failure.what()));
    } catch (const Json::exception&) {
        refuse(fmt::format("line {} is none of a plan", number));
    }
    if (!isWhole || outputs.empty()) refuse("it is cut off, or has no pictures");
    setDestination(batch, line.to);
    return OutputNames(batch, std::move(outputs));
}

}  // namespace tessarine
