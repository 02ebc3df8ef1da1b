#include "runner/runner.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <unistd.h>

#include <fmt/format.h>

#include "batch/batch.h"
#include "imagefiles/codec/codec_files.h"
#include "imagefiles/codec/helper_process.h"
#include "imagefiles/disk.h"
#include "imagefiles/leftovers.h"
#include "pixels/machine.h"
#include "pixels/threads.h"
#include "runner/command_line.h"
#include "runner/failed_list.h"
#include "runner/listings.h"
#include "runner/merged_report.h"
#include "runner/messages.h"
#include "runner/preparation.h"
#include "runner/progress_line.h"
#include "runner/refusal.h"
#include "runner/report_writer.h"
#include "runner/run_order.h"
#include "runner/signals.h"
#include "runner/terminal_platform.h"

namespace tessarine {

namespace {

/// Prints what was asked for.
ExitStatus print(const std::string& text) {
    if (writeToOutput(text)) return ExitStatus::done;
    complain("standard output takes no more");
    return ExitStatus::somePictures;
}

/// Says which rows of the chain stand for no function: a function list may hold them.
void warnOfRowsWithoutFunction(const cBatch& batch) {
    for (const TrayRow& row : batch.Ltray) {
        const FunctionDef* function = findFunction(row.Tag);
        if (function == nullptr || function->call == nullptr)
            complain(
                fmt::format("the row '{}' stands for no function and changes nothing", row.text));
    }
}

/// The overview with the line ends of a terminal.
std::string forTerminal(std::string overview) {
    std::erase(overview, '\r');
    return overview + "\n";
}

/// Pictures in flight, and threads of each one's filters, so that the processors are busy: one
/// picture more than there are, for those that wait for the disk.
void setUpThreads(cBatch& batch, const CommandLine& line, int64_t picturesOfRun) {
    allowManyFiles();
    const int cores = availableCores();
    const auto pictures = static_cast<int>(std::min<int64_t>(picturesOfRun, 1024));
    batch.jobs = line.jobs > 0 ? line.jobs : std::max(1, std::min(cores + 1, pictures));
    const int inFlight = line.windowMode ? 1 : std::clamp(batch.jobs, 1, std::max(pictures, 1));
    setFilterThreads(line.threads > 0 ? line.threads : std::max(1, cores / inFlight));
}

ExitStatus run(cBatch& batch, TerminalPlatform& platform, const CommandLine& line) {
    const RunOrder order = line.windowMode ? RunOrder() : orderOf(batch, line);
    RunSummary summary;
    summary.basket = static_cast<int64_t>(batch.lvSelected.size());
    summary.pictures = line.windowMode ? summary.basket : static_cast<int64_t>(order.tasks.size());
    if (line.shard) summary.shard = line.shard->text();
    const int64_t pictures = summary.pictures;

    ReportWriter report(line.report);
    FailedList failedList(line.failedList);
    const bool onTerminal = ::isatty(STDERR_FILENO) != 0;
    ProgressLine progress(line.progress || (onTerminal && !line.quiet), pictures);
    RunCounts counts;
    batch.report.onEntry = [&](const PictureReport& entry) {
        counts.count(entry.status);
        report.write(entry);
        if (entry.status == PictureReport::Status::failed) {
            progress.clear();
            complain(fmt::format("{}: {}: {}", entry.input, entry.error, entry.message));
            failedList.add(entry.input);
        }
        progress.update(counts.all());
    };
    platform.onGiveWay = [&batch] {
        if (interrupted()) batch.stopRequested = true;
    };

    setUpThreads(batch, line, pictures);
    const auto start = std::chrono::steady_clock::now();
    if (line.windowMode) {
        batch.CmdBatchAll();
    } else {
        removeLeftDrafts(batch.txtDestination);
        batch.BatchEach(order);
        syncFolder(batch.txtDestination);
    }
    summary.ms = millisecondsSince(start);
    summary.interrupted = interrupted();
    progress.clear();

    bool told = report.writeSummary(counts, summary);
    if (!told) complain(fmt::format("--report: '{}' could not be written whole", line.report));
    if (!failedList.isWhole()) {
        complain(fmt::format("--failed-list: '{}' could not be written whole", line.failedList));
        told = false;
    }
    if (line.maxFailures && counts.all() < pictures && !summary.interrupted)
        complain(fmt::format("stopped by --max-failures {}; {} of {} pictures were not begun",
                             *line.maxFailures, pictures - counts.all(), pictures));
    if (line.windowMode && !line.quiet) {
        // Standard output is the report's where it was asked for there.
        if (line.report == "-")
            writeToTerminal(forTerminal(batch.RTF));
        else
            told = print(forTerminal(batch.RTF)) == ExitStatus::done && told;
    }
    if (!line.quiet)
        writeToTerminal(fmt::format(
            "{} saved, {} kept, {} failed of {} pictures in {:.1f} seconds{}\n", counts.saved,
            counts.kept, counts.failed, pictures, static_cast<double>(summary.ms) / 1000,
            summary.interrupted ? ", interrupted" : ""));
    if (interrupted()) return terminated() ? ExitStatus::terminated : ExitStatus::interrupted;
    return counts.failed > 0 || !told ? ExitStatus::somePictures : ExitStatus::done;
}

/// How picture files are read and written. A run does not start without the helper program; what is
/// only planned needs none.
CodecFiles::Options helpersFor(const CommandLine& line) {
    CodecFiles::Options options;
    options.wishes.seconds = line.timeout;
    if (line.memory) options.wishes.memoryBytes = uint64_t{*line.memory} << 20;
    if (line.verbose) options.onNotice = [](const std::string& text) { complain(text); };
    options.startsEarly = !line.dryRun;
    if (line.dryRun) return options;
    try {
        options.program = helperProgram();
    } catch (const StatementFailed& failure) {
        throw Refusal(ExitStatus::nothingStarts, failure.what());
    }
    return options;
}

ExitStatus runAsAsked(int argc, const char* const* argv) {
    const std::optional<CommandLine> line = readCommandLine(argc, argv);
    if (!line) return ExitStatus::done;
    if (line->listFunctions || line->listFormats)
        return print((line->listFunctions ? functionListing() : std::string()) +
                     (line->listFormats ? formatListing() : std::string()));

    if (!line->reportsToMerge.empty()) return mergeReports(*line);

    CodecFiles files(helpersFor(*line));
    const HandOverMemory shared(files.memory());
    TerminalPlatform platform;
    cBatch batch(platform, files);
    prepareRun(batch, *line);
    // Before the first word: a reader of standard error who left does not end the run.
    if (!line->dryRun) listenToSignals();
    if (!line->quiet) warnOfRowsWithoutFunction(batch);
    if (line->dryRun) return print(planOf(orderOf(batch, *line)));
    return run(batch, platform, *line);
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
    openStandardFiles();
    try {
        return static_cast<int>(runAsAsked(argc, argv));
    } catch (const Refusal& refusal) {
        complain(refusal.what());
        return static_cast<int>(refusal.status());
    } catch (const std::exception& failure) {
        complain(failure.what());
        return static_cast<int>(ExitStatus::nothingStarts);
    }
}

}  // namespace tessarine
