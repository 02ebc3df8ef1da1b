#include "runner/protection.h"

#include <filesystem>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "batch/file_identity.h"
#include "runner/refusal.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

/// A file that the run is to write beside its outputs.
struct Telling {
    std::string option;
    std::string file;
};

[[noreturn]] void refuse(const Telling& telling, const std::string& what) {
    throw Refusal(ExitStatus::nothingStarts,
                  fmt::format("{}: '{}' is {} of this run; expected another file", telling.option,
                              telling.file, what));
}

void protectFrom(const Telling& telling, const OutputNames& outputs, const CommandLine& line,
                 RealNames& names) {
    const std::string name = names.of(telling.file);
    for (size_t i = 0; i < outputs.count(); ++i)
        if (names.of(outputs.of(i)) == name) refuse(telling, "an output");

    std::error_code ignored;
    const auto written = identityOf(telling.file);
    if (!written || !fs::is_regular_file(telling.file, ignored)) return;
    for (size_t i = 0; i < outputs.count(); ++i)
        if (identityOf(outputs.of(i)) == written) refuse(telling, "an output");
    for (size_t i = 0; i < outputs.count(); ++i)
        if (identityOf(outputs.inputOf(i)) == written) refuse(telling, "a picture");
    for (const GivenPictures& source : line.pictures)
        if (source.kind != GivenPictures::Kind::path && identityOf(source.value) == written)
            refuse(telling, "a picture list");
    for (const FunctionSource& source : line.functions)
        if (source.kind == FunctionSource::Kind::list && identityOf(source.value) == written)
            refuse(telling, "a function list");
    if (!line.fromPlan.empty() && identityOf(line.fromPlan) == written) refuse(telling, "the plan");
}

}  // namespace

void protectPictures(const OutputNames& outputs, bool mayReplace, RealNames& names,
                     const FoundConflict& found) {
    std::map<FileIdentity, size_t> replaced;
    for (size_t i = 0; mayReplace && i < outputs.count(); ++i)
        if (const auto identity = identityOf(outputs.of(i))) replaced.emplace(*identity, i);
    // By the name under which it would be there.
    std::unordered_multimap<std::string, size_t> missing;
    for (size_t i = 0; i < outputs.count(); ++i) {
        const std::string& input = outputs.inputOf(i);
        const auto identity = identityOf(input);
        if (!identity) {
            missing.emplace(names.of(behindLinks(input)), i);
            continue;
        }
        const auto output = replaced.find(*identity);
        if (output != replaced.end())
            found(output->second, fmt::format("'{}' is a picture of this run and has the name of "
                                              "its output '{}'; expected another --name or --to",
                                              input, outputs.of(output->second)));
    }
    // One that is not there may come to be by this very run. Without leave to overwrite, its own
    // output at least comes too late to be read.
    for (size_t i = 0; !missing.empty() && i < outputs.count(); ++i) {
        const auto [first, end] = missing.equal_range(names.of(outputs.of(i)));
        for (auto input = first; input != end; ++input)
            if (input->second != i || mayReplace)
                found(i,
                      fmt::format("'{}' is a picture of this run, is not there, and has the name "
                                  "of an output; expected another --name or --to",
                                  outputs.inputOf(input->second)));
    }
}

void protectFromTelling(const OutputNames& outputs, const CommandLine& line, RealNames& names) {
    const std::vector<Telling> all{{"--report", line.report == "-" ? std::string() : line.report},
                                   {"--failed-list", line.failedList},
                                   {"--resume", line.resume},
                                   {"--plan", line.plan == "-" ? std::string() : line.plan}};
    for (const Telling& telling : all) {
        if (telling.file.empty()) continue;
        protectFrom(telling, outputs, line, names);
        std::error_code ignored;
        for (const Telling* before = all.data(); before != &telling; ++before)
            if (!before->file.empty() && (names.of(before->file) == names.of(telling.file) ||
                                          fs::equivalent(before->file, telling.file, ignored)))
                refuse(telling, before->option == "--report"        ? "the report"
                                : before->option == "--failed-list" ? "the failed list"
                                                                    : "the journal");
    }
}

}  // namespace tessarine
