#include "runner/runner.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <sys/stat.h>

#include <fmt/format.h>

#include "batch/batch.h"
#include "imagefiles/format_table.h"
#include "runner/command_line.h"
#include "runner/function_arguments.h"
#include "runner/listings.h"
#include "runner/pictures.h"
#include "runner/progress_line.h"
#include "runner/refusal.h"
#include "runner/report_writer.h"
#include "runner/terminal_platform.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

volatile std::sig_atomic_t interruption = 0;

/// Interrupting a run stops it after the picture under way.
void listenToSignals() {
    struct sigaction action {};
    action.sa_handler = [](int number) { interruption = number; };
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(number, &action, nullptr);
}

std::string outputName(const cBatch& batch, size_t number) {
    const FormatRow& row = formatTable()[static_cast<size_t>(batch.cboFormat.index)];
    return fmt::format("{}{}{}.{}", batch.txtDestination, batch.txtName, number, row.extension);
}

/// Fills what the run reads, as a person would in the window's steps.
/// \throws Refusal where that cannot make a run
void setUp(cBatch& batch, const CommandLine& line) {
    batch.cboFormat.index = formatRowOf(line.format);
    addFunctions(batch, line);
    if (line.to.empty())
        throw Refusal(ExitStatus::commandLine, "--to is missing; expected the folder to save into");
    std::error_code ignored;
    if (!fs::is_directory(line.to, ignored))
        throw Refusal(
            ExitStatus::nothingStarts,
            fmt::format("--to: there is no folder '{}'; expected one that exists", line.to));
    batch.txtDestination = line.to;
    if (!batch.txtDestination.ends_with(folderSeparator)) batch.txtDestination += folderSeparator;
    batch.txtName = line.name;
    batch.chkOverwrite = line.overwrite ? 1 : 0;
    batch.lvSelected = collectPictures(line);
    if (batch.lvSelected.empty())
        throw Refusal(ExitStatus::nothingStarts,
                      "there are no pictures; expected files, folders with pictures, --pictures or "
                      "--from");
}

/// Refuses a run in which the output of one picture would replace another picture of the run.
void protectSources(const cBatch& batch) {
    if (batch.chkOverwrite == 0) return;
    std::map<std::pair<dev_t, ino_t>, size_t> outputs;
    struct stat file {};
    for (size_t i = 1; i <= batch.lvSelected.size(); ++i)
        if (::stat(outputName(batch, i).c_str(), &file) == 0)
            outputs.emplace(std::pair(file.st_dev, file.st_ino), i);
    if (outputs.empty()) return;
    for (const BasketItem& item : batch.lvSelected) {
        if (::stat(item.Tag.c_str(), &file) != 0) continue;
        const auto found = outputs.find({file.st_dev, file.st_ino});
        if (found == outputs.end()) continue;
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("'{}' is a picture of this run and has the name of output {}; "
                                  "expected another --name or --to",
                                  item.Tag, found->second));
    }
}

/// Says which functions of the chain this version does not carry out.
void warnOfMissingFunctions(const cBatch& batch) {
    for (const TrayRow& row : batch.Ltray) {
        const FunctionDef* function = findFunction(row.Tag);
        if (function == nullptr || function->call == nullptr)
            fmt::print(stderr,
                       "tessarine-batch: the function '{}' changes nothing in this version\n",
                       row.text);
    }
}

void printPlan(const cBatch& batch) {
    for (size_t i = 1; i <= batch.lvSelected.size(); ++i) {
        const std::string output = outputName(batch, i);
        std::error_code ignored;
        const bool exists = fs::exists(output, ignored);
        fmt::print("{} -> {}{}\n", batch.lvSelected[i - 1].Tag, output,
                   !exists                   ? ""
                   : batch.chkOverwrite == 0 ? " (exists, kept)"
                                             : " (exists, replaced)");
    }
}

/// The overview with the line ends of a terminal.
std::string forTerminal(std::string overview) {
    std::erase(overview, '\r');
    return overview + "\n";
}

ExitStatus run(cBatch& batch, TerminalPlatform& platform, const CommandLine& line) {
    ReportWriter report(line.report);
    const auto pictures = static_cast<int64_t>(batch.lvSelected.size());
    const bool onTerminal = ::isatty(STDERR_FILENO) != 0;
    ProgressLine progress(line.progress || (onTerminal && !line.quiet), pictures);
    RunCounts counts;
    batch.report.onEntry = [&](const PictureReport& entry) {
        counts.count(entry.status);
        report.write(entry);
        if (entry.status == PictureReport::Status::failed) {
            progress.clear();
            fmt::print(stderr, "tessarine-batch: {}: {}: {}\n", entry.input, entry.error,
                       entry.message);
        }
        progress.update(counts.all());
    };
    platform.onGiveWay = [&batch] {
        if (interruption != 0) batch.stopRequested = true;
    };

    listenToSignals();
    const auto start = std::chrono::steady_clock::now();
    if (line.windowMode)
        batch.CmdBatchAll();
    else
        batch.BatchEach();
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    progress.clear();

    const bool interrupted = interruption != 0;
    report.writeSummary(counts, pictures, static_cast<int64_t>(passed.count() * 1000), interrupted);
    if (line.windowMode && !line.quiet)
        fmt::print(line.report == "-" ? stderr : stdout, "{}", forTerminal(batch.RTF));
    if (!line.quiet)
        fmt::print(stderr, "{} saved, {} kept, {} failed of {} pictures in {:.1f} seconds{}\n",
                   counts.saved, counts.kept, counts.failed, pictures, passed.count(),
                   interrupted ? ", interrupted" : "");
    if (interrupted) return ExitStatus::interrupted;
    return counts.failed > 0 ? ExitStatus::somePictures : ExitStatus::done;
}

ExitStatus runAsAsked(int argc, const char* const* argv) {
    const std::optional<CommandLine> line = readCommandLine(argc, argv);
    if (!line) return ExitStatus::done;
    if (line->listFunctions) fmt::print("{}", functionListing());
    if (line->listFormats) fmt::print("{}", formatListing());
    if (line->listFunctions || line->listFormats) return ExitStatus::done;

    TerminalPlatform platform;
    cBatch batch(platform);
    setUp(batch, *line);
    if (!line->windowMode) protectSources(batch);
    if (!line->quiet) warnOfMissingFunctions(batch);
    if (line->dryRun) {
        printPlan(batch);
        return ExitStatus::done;
    }
    return run(batch, platform, *line);
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
    try {
        return static_cast<int>(runAsAsked(argc, argv));
    } catch (const Refusal& refusal) {
        fmt::print(stderr, "tessarine-batch: {}\n", refusal.what());
        return static_cast<int>(refusal.status());
    }
}

}  // namespace tessarine
