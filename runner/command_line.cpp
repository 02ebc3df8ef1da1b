#include "runner/command_line.h"

#include <cstdlib>
#include <limits>
#include <map>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "batch/texts.h"
#include "imagefiles/format_table.h"
#include "runner/options.h"
#include "runner/refusal.h"

namespace tessarine {

namespace {

constexpr const char* mergeReports = "--merge-reports";

/// Accepts only the letters r, g and b.
std::string onlyChannels(const std::string& text) {
    if (text.find_first_not_of("rgb") == std::string::npos && !text.empty()) return {};
    return fmt::format("'{}' is no set of channels; expected letters of rgb", text);
}

/// Accepts a number of seconds within reason, which neither infinity is nor what is no number.
std::string onlySeconds(const std::string& text) {
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    if (!text.empty() && *end == '\0' && seconds >= 0.1 && seconds <= 1e6) return {};
    return fmt::format("'{}' is no time for a picture; expected 0.1 to 1000000 seconds", text);
}

// The library takes a word in brackets apart as a list of words. A mark before it keeps it whole.
constexpr char mark = '\x01';

std::string withMark(std::string word) {
    if (word.starts_with('[') || word.starts_with(mark)) word.insert(word.begin(), mark);
    return word;
}

std::string withoutMark(std::string word) {
    if (word.starts_with(mark)) word.erase(word.begin());
    return word;
}

[[noreturn]] void refuse(const std::string& why) { throw Refusal(ExitStatus::commandLine, why); }

OnExists onExistsOf(const std::string& word, bool overwrite) {
    if (overwrite && !word.empty() && word != "overwrite")
        refuse(
            fmt::format("--overwrite and --on-exists {} contradict each other; expected one of "
                        "them",
                        word));
    if (overwrite || word == "overwrite") return OnExists::overwrite;
    return word == "fail" ? OnExists::fail : OnExists::keep;
}

/// The window's run goes over the whole basket and stops at no failure.
void refuseInWindowMode(const CommandLine& line, bool failFast) {
    const auto refuseOne = [](bool given, const char* option) {
        if (given)
            refuse(fmt::format("{} is not for --mode window; expected --mode independent", option));
    };
    refuseOne(line.shard.has_value(), "--shard");
    refuseOne(line.onExists == OnExists::fail, "--on-exists fail");
    refuseOne(failFast, "--fail-fast");
    refuseOne(line.maxFailures.has_value(), "--max-failures");
    refuseOne(line.keepTree, "--keep-tree");
    refuseOne(line.keepNames, "--keep-names");
    refuseOne(!line.resume.empty(), "--resume");
    refuseOne(!line.plan.empty(), "--plan");
    refuseOne(line.metadata.autoOrient, "--auto-orient");
    refuseOne(line.metadata.keep, "--keep-metadata");
    refuseOne(line.metadata.stripLocation, "--strip-location");
}

/// What a plan tells is not told a second time.
void refuseBesidePlan(const CLI::App& app) {
    for (const char* name : {"PATH",
                             "--recursive",
                             "--pictures",
                             "--from",
                             "-0",
                             "--functions",
                             "--apply",
                             "--degrees",
                             "--invert",
                             "--kill",
                             "--to",
                             "--name",
                             "--format",
                             "--on-exists",
                             "--overwrite",
                             "--keep-tree",
                             "--below",
                             "--keep-names",
                             "--auto-orient",
                             "--keep-metadata",
                             "--strip-location",
                             "--mode",
                             "--plan"})
        if (app.get_option(name)->count() > 0)
            refuse(
                fmt::format("{} does not go with --from-plan, since the plan tells what is done; "
                            "expected only options on how it is done, such as --jobs",
                            name));
}

/// Reports are merged and no pictures run, so that hardly anything else can be meant with it.
void refuseBesideMergedReports(const CLI::App& app) {
    for (const CLI::Option* option : app.get_options())
        if (option->count() > 0 && option->get_name() != mergeReports &&
            option->get_name() != "--report" && option->get_name() != "--quiet")
            refuse(fmt::format("{} does not go with {}; expected --report or --quiet",
                               option->get_name(), mergeReports));
}

/// Reads the command line, or, with a visitor, shows it the options and reads nothing. Where they
/// are declared their values are local, so one function does both.
std::optional<CommandLine> readOrShow(int argc, const char* const* argv,
                                      const OptionsVisitor& visitor) {
    CommandLine line;
    CLI::App app{
        "Runs a chain of image functions over many pictures, without a window.\n"
        "Every picture is saved as FOLDER/NAME<number>.<extension>.",
        "tessarine-batch"};
    app.set_version_flag("--version", std::string("tessarine-batch ") + TESSARINE_VERSION);

    std::vector<std::string> paths, lists, froms, functionLists, applied;
    std::string mode = "independent", onExists, shard;
    bool overwrite = false, failFast = false;
    auto* const path =
        app.add_option("PATH", paths, "Files, or folders (their accepted files, by name)")
            ->group("Pictures");
    app.add_flag("--recursive", line.recursive, "Folders with all below them")->group("Pictures");
    auto* const list =
        app.add_option("--pictures", lists, "A picture list (qpkl)")->type_name("FILE");
    auto* const from =
        app.add_option("--from", froms, "One path a line; - for standard input")->type_name("FILE");
    app.add_flag("-0", line.nulBetweenPaths, "With --from: NUL between paths");
    for (const char* name : {"--pictures", "--from", "-0"})
        app.get_option(name)->group("Pictures");

    auto* const functions =
        app.add_option("--functions", functionLists, "A function list (qfk), its rows in order")
            ->type_name("FILE");
    auto* const apply =
        app.add_option("--apply", applied, "One catalogue function, e.g. \"Contrast:Level=40\"")
            ->type_name("\"NAME[:KEY=VALUE,...]\"");
    app.add_option("--degrees", line.degrees, "The angle of Rotate Intelligently")
        ->type_name("N")
        ->check(CLI::Range(-180, 180));
    app.add_option("--invert", line.invert, "Channels that Swap RGB inverts")
        ->type_name("rgb")
        ->check(onlyChannels);
    app.add_option("--kill", line.kill, "Channels that Swap RGB sets to 0")
        ->type_name("rgb")
        ->check(onlyChannels);
    for (const char* name : {"--functions", "--apply", "--degrees", "--invert", "--kill"})
        app.get_option(name)->group("Functions");
    // A value belongs to the option before it, and what follows is a path.
    for (CLI::Option* option : {list, from, functions, apply})
        option->expected(1)->take_all()->allow_extra_args(false);

    app.add_option("--to", line.to, "Destination folder")->type_name("FOLDER");
    app.add_option("--name", line.name, "Generic name, default Sample")->type_name("TEXT");
    app.add_option("--format", line.format,
                   "A row of --list-formats, by number, text or short name; default jpg-good")
        ->type_name("ROW");
    app.add_option("--on-exists", onExists,
                   "What becomes of a picture whose output exists; default keep")
        ->type_name("keep|overwrite|fail")
        ->check(CLI::IsMember({"keep", "overwrite", "fail"}));
    app.add_flag("--overwrite", overwrite, "Short for --on-exists overwrite");
    app.add_flag(
        "--keep-tree", line.keepTree,
        "Save into folders that lie below FOLDER as those of the pictures do below theirs");
    app.add_option("--below", line.below,
                   "With --keep-tree: the folder that the pictures' folders are told from")
        ->type_name("FOLDER");
    app.add_flag("--keep-names", line.keepNames,
                 "Save under the pictures' own names instead of NAME<number>");
    app.add_flag("--auto-orient", line.metadata.autoOrient,
                 "Turn pictures upright as their EXIF says, before the functions");
    app.add_flag("--keep-metadata", line.metadata.keep,
                 "Keep EXIF, IPTC, XMP, the colour profile and the file's time");
    app.add_flag("--strip-location", line.metadata.stripLocation,
                 "With --keep-metadata: all but coordinates and names of places");
    for (const char* name :
         {"--to", "--name", "--format", "--on-exists", "--overwrite", "--keep-tree", "--below",
          "--keep-names", "--auto-orient", "--keep-metadata", "--strip-location"})
        app.get_option(name)->group("Saving");

    app.add_option("--mode", mode, "Each picture by itself (default), or the window's run")
        ->type_name("independent|window")
        ->check(CLI::IsMember({"independent", "window"}));
    auto* const share =
        app.add_option("--shard", shard,
                       "A share of the pictures: share K, from 0, of N; or auto, in a job array "
                       "of Slurm, Kubernetes or AWS Batch")
            ->type_name("K/N|auto");
    app.add_flag("--fail-fast", failFast, "Short for --max-failures 1");
    app.add_option("--max-failures", line.maxFailures,
                   "Begin no further picture once so many have failed")
        ->type_name("N")
        ->check(CLI::Range(1, std::numeric_limits<int32_t>::max()));
    app.add_option("--jobs", line.jobs, "Pictures in flight; default one more than processors")
        ->type_name("N")
        ->check(CLI::Range(1, 1024));
    app.add_option("--threads", line.threads,
                   "Threads a filter; default its part of the processors")
        ->type_name("N")
        ->check(CLI::Range(1, 1024));
    app.add_option("--timeout", line.timeout,
                   "Seconds that reading or writing a picture may take; default by its size")
        ->type_name("SECONDS")
        ->check(onlySeconds);
    app.add_option("--memory", line.memory,
                   "Memory that reading or writing a picture may take, in MiB; default half of the "
                   "machine's, between 1024 and 8192")
        ->type_name("MIB")
        ->check(CLI::Range(16, 1 << 20));
    app.add_flag("--dry-run", line.dryRun, "Print what would be written, and write nothing");
    app.add_flag("--quiet", line.quiet, "Say nothing but failures");
    app.add_flag("--verbose", line.verbose,
                 "Tell what of the protection from bad files this system lacks");
    app.add_flag("--progress", line.progress, "A progress line even where none is usual");
    app.add_option("--report", line.report, "JSON lines, one a picture; - for standard output")
        ->type_name("FILE");
    app.add_option("--resume", line.resume,
                   "Do only what is stale by this journal, and tell it what is done")
        ->type_name("JOURNAL");
    app.add_option("--plan", line.plan,
                   "Write what would be done, as JSON lines, and do nothing; - for standard output")
        ->type_name("FILE");
    app.add_option("--from-plan", line.fromPlan, "Do what a plan tells")->type_name("FILE");
    app.add_option("--failed-list", line.failedList, "A picture list (qpkl) of what failed")
        ->type_name("FILE");
    for (const char* name :
         {"--mode", "--shard", "--fail-fast", "--max-failures", "--jobs", "--threads", "--timeout",
          "--memory", "--dry-run", "--quiet", "--verbose", "--progress", "--report",
          "--failed-list", "--resume", "--plan", "--from-plan"})
        app.get_option(name)->group("Running");
    app.add_option(mergeReports, line.reportsToMerge,
                   "Make one report of those of all shards; to --report or standard output")
        ->type_name("FILE...")
        ->expected(1, std::numeric_limits<int32_t>::max())
        ->group("Merging");
    app.add_flag("--list-functions", line.listFunctions, "All functions with their inputs");
    app.add_flag("--list-formats", line.listFormats, "All output formats");
    for (const char* name : {"--list-functions", "--list-formats", "--help", "--version"})
        app.get_option(name)->group("Asking");
    if (visitor) {
        visitor(app);
        return std::nullopt;
    }

    for (CLI::Option* option : app.get_options())
        if (option->get_expected_max() > 0) option->transform(withoutMark);
    std::vector<std::string> words;
    for (int i = argc; i-- > 1;)
        words.push_back(withMark(argv[i]));

    try {
        app.parse(std::move(words));
    } catch (const CLI::Success& asked) {
        app.exit(asked);
        return std::nullopt;
    } catch (const CLI::ParseError& wrong) {
        throw Refusal(ExitStatus::commandLine, wrong.what());
    }

    // The library keeps the values of each option apart; their common order is in parse_order().
    std::map<const CLI::Option*, size_t> taken;
    for (const CLI::Option* option : app.parse_order()) {
        const auto next = [&](const std::vector<std::string>& values) {
            const std::string& value = values.at(taken[option]++);
            if (value.empty())
                throw Refusal(ExitStatus::commandLine,
                              option->get_name() + ": an empty text; expected a name");
            return value;
        };
        if (option == path)
            line.pictures.push_back({GivenPictures::Kind::path, next(paths)});
        else if (option == list)
            line.pictures.push_back({GivenPictures::Kind::list, next(lists)});
        else if (option == from)
            line.pictures.push_back({GivenPictures::Kind::from, next(froms)});
        else if (option == functions)
            line.functions.push_back({FunctionSource::Kind::list, next(functionLists)});
        else if (option == apply)
            line.functions.push_back({FunctionSource::Kind::apply, next(applied)});
    }
    line.windowMode = mode == "window";
    if (!line.reportsToMerge.empty()) {
        refuseBesideMergedReports(app);
        return line;
    }
    if (share->count() > 0) line.shard = shardOf(shard, ::getenv);
    for (const char* name : {"--failed-list", "--below", "--resume", "--plan", "--from-plan"})
        if (app.get_option(name)->count() > 0 && app.get_option(name)->as<std::string>().empty())
            refuse(fmt::format("{}: an empty text; expected a name", name));
    if (line.keepNames && app.get_option("--name")->count() > 0)
        refuse("--keep-names and --name do not go together; expected one of them");
    if (!line.below.empty() && !line.keepTree)
        refuse("--below tells where trees begin that --keep-tree keeps; expected both or none");
    if (!line.fromPlan.empty()) refuseBesidePlan(app);
    // What is planned is not done anyway.
    if (!line.plan.empty()) line.dryRun = false;
    if (!line.plan.empty() && line.shard)
        refuse(
            "--plan and --shard do not go together; expected a plan of the whole basket, of "
            "which --from-plan takes shares");
    line.onExists = onExistsOf(onExists, overwrite);
    if (line.windowMode) refuseInWindowMode(line, failFast);
    if (failFast && line.maxFailures.value_or(1) != 1)
        refuse(
            fmt::format("--fail-fast and --max-failures {} contradict each other; expected one "
                        "of them",
                        *line.maxFailures));
    if (failFast) line.maxFailures = 1;
    return line;
}

}  // namespace

std::optional<CommandLine> readCommandLine(int argc, const char* const* argv) {
    return readOrShow(argc, argv, nullptr);
}

void visitOptions(const OptionsVisitor& visitor) { readOrShow(0, nullptr, visitor); }

int16_t formatRowOf(const std::string& text) {
    const std::string wanted = lowerCase(trimmed(text));
    for (int16_t row = 0; row < formatRowCount; ++row) {
        const FormatRow& format = formatTable()[static_cast<size_t>(row)];
        if (wanted == std::to_string(row) || wanted == format.shortName ||
            wanted == lowerCase(trimmed(format.text)))
            return row;
    }
    throw Refusal(ExitStatus::commandLine,
                  fmt::format("--format: '{}' is no output format; expected a row of "
                              "--list-formats, such as 6 or jpg-good",
                              text));
}

}  // namespace tessarine
