#include "runner/runner.h"

#include <chrono>
#include <memory>
#include <string>
#include <unistd.h>

#include <fmt/format.h>

#include "batch/batch.h"
#include "batch/parallelism.h"
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
#include "runner/output_names.h"
#include "runner/plan.h"
#include "runner/preparation.h"
#include "runner/progress_line.h"
#include "runner/protection.h"
#include "runner/real_names.h"
#include "runner/refusal.h"
#include "runner/report_writer.h"
#include "runner/resume.h"
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

/// The window's run has one picture in flight, and all threads for its filters.
void setUpThreads(cBatch& batch, const CommandLine& line, int64_t picturesOfRun) {
    const Parallelism shares = parallelismFor(static_cast<size_t>(picturesOfRun),
                                              line.windowMode ? 1 : line.jobs, line.threads);
    batch.jobs = shares.jobs;
    setFilterThreads(shares.filterThreads);
}

/// \param resumption  nullptr where nothing is resumed
ExitStatus run(cBatch& batch, TerminalPlatform& platform, const CommandLine& line,
               const RunOrder& order, const Resumption* resumption) {
    RunSummary summary;
    summary.basket = static_cast<int64_t>(batch.lvSelected.size());
    summary.pictures = line.windowMode ? summary.basket : static_cast<int64_t>(order.tasks.size());
    if (line.shard) summary.shard = line.shard->text();
    const int64_t pictures = summary.pictures;

    ReportWriter report(line.report);
    FailedList failedList(line.failedList);
    std::vector<std::string> folders;
    if (!line.windowMode) folders = foldersOf(order.tasks, batch.txtDestination);
    makeFolders(folders);
    // Behind all that may keep the run from starting, so that what it would have told in their
    // place still stands there.
    report.beginAnew();
    failedList.beginAnew();
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
        for (const std::string& folder : folders)
            removeLeftDrafts(folder);
        batch.BatchEach(order);
        for (const std::string& folder : folders)
            syncFolder(folder);
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
    if (resumption != nullptr && !resumption->isWhole()) {
        complain(fmt::format("--resume: '{}' could not be written whole", line.resume));
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

/// Looks for what would make the run destroy what it needs, or what it makes itself.
/// \return pictures in conflict, where these are to be told in a plan
/// \throws Refusal (nothingStarts)
Conflicts protect(const OutputNames& outputs, const CommandLine& line) {
    RealNames names;
    Conflicts conflicts;
    if (!line.windowMode) {
        const FoundConflict found = [&](size_t place, const std::string& why) {
            if (line.plan.empty()) throw Refusal(ExitStatus::nothingStarts, why);
            conflicts.emplace_back(place, why);
        };
        checkFolders(outputs);
        findCollisions(outputs, names, found);
        protectPictures(outputs, line.onExists == OnExists::overwrite, names, found);
    }
    protectFromTelling(outputs, line, names);
    return conflicts;
}

/// Has the order do what is stale by the journal; nullptr where none is given.
std::unique_ptr<const Resumption> resume(const cBatch& batch, const CommandLine& line,
                                         RunOrder& order) {
    if (line.resume.empty()) return nullptr;
    const bool isOnlyTold = line.dryRun || !line.plan.empty();
    return std::make_unique<Resumption>(
        line.resume, isOnlyTold ? Journal::Use::look : Journal::Use::append, batch, order);
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
    std::optional<CommandLine> line = readCommandLine(argc, argv);
    if (!line) return ExitStatus::done;
    if (line->listFunctions || line->listFormats)
        return print((line->listFunctions ? functionListing() : std::string()) +
                     (line->listFormats ? formatListing() : std::string()));

    if (!line->reportsToMerge.empty()) return mergeReports(*line);

    CodecFiles files(helpersFor(*line));
    const HandOverMemory shared(files.memory());
    TerminalPlatform platform;
    cBatch batch(platform, files);
    const OutputNames outputs =
        line->fromPlan.empty() ? prepareRun(batch, *line) : takePlan(batch, *line);
    const Conflicts conflicts = protect(outputs, *line);
    RunOrder order = line->windowMode ? RunOrder() : orderOf(outputs, *line);
    const std::unique_ptr<const Resumption> resumption = resume(batch, *line, order);
    if (!line->dryRun) allowManyFiles();
    if (!line->plan.empty()) return writePlan(*line, batch, outputs, order, conflicts, files);
    // Before the first word: a reader of standard error who left does not end the run.
    if (!line->dryRun) listenToSignals();
    if (!line->quiet) warnOfRowsWithoutFunction(batch);
    if (line->dryRun) return print(planOf(order));
    return run(batch, platform, *line, order, resumption.get());
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
