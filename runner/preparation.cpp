#include "runner/preparation.h"

#include <charconv>
#include <filesystem>
#include <limits>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>

#include "runner/function_arguments.h"
#include "runner/pictures.h"
#include "runner/refusal.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

constexpr size_t longestFileName = 255;
constexpr size_t most16Bits = std::numeric_limits<int16_t>::max();

using FileIdentity = std::pair<dev_t, ino_t>;

/// Which file a path leads to; nothing where there is none.
std::optional<FileIdentity> identityOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity(status.st_dev, status.st_ino);
}

[[noreturn]] void refuseStart(const std::string& why) {
    throw Refusal(ExitStatus::nothingStarts, why);
}

void setDestination(cBatch& batch, const std::string& folder) {
    if (folder.empty())
        throw Refusal(ExitStatus::commandLine, "--to is missing; expected the folder to save into");
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored))
        refuseStart(fmt::format("--to: there is no folder '{}'; expected one that exists", folder));
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        refuseStart(fmt::format("--to: the folder '{}' cannot be written to; expected one that can",
                                folder));
    batch.txtDestination = asFolder(folder);
}

void setName(cBatch& batch, const std::string& name, const std::string& extension) {
    if (name.find(folderSeparator) != std::string::npos)
        throw Refusal(ExitStatus::commandLine,
                      fmt::format("--name: '{}' is no name; expected one without '{}'", name,
                                  folderSeparator));
    batch.txtName = name;
    const auto pictures = static_cast<int32_t>(batch.lvSelected.size());
    if (batch.outputName({}, pictures, extension).size() > longestFileName)
        throw Refusal(ExitStatus::commandLine,
                      fmt::format("--name: the names of the outputs have more than {} bytes; "
                                  "expected a shorter one",
                                  longestFileName));
}

/// The 16-bit counts of the window's run hold so many items and no more.
void checkCounts(const cBatch& batch, bool windowMode) {
    if (windowMode && batch.lvSelected.size() > most16Bits)
        refuseStart(fmt::format("these are {} pictures; expected at most {} in window mode",
                                batch.lvSelected.size(), most16Bits));
    if (batch.Ltray.size() > most16Bits)
        refuseStart(fmt::format("these are {} functions; expected at most {}", batch.Ltray.size(),
                                most16Bits));
}

/// A path behind all links at its end, also where there is nothing.
fs::path behindLinks(fs::path path) {
    constexpr int mostLinks = 40;  // as many as the system follows
    std::error_code failure;
    for (int i = 0; i < mostLinks && fs::is_symlink(fs::symlink_status(path, failure)); ++i)
        path = path.parent_path() / fs::read_symlink(path, failure);
    return path;
}

/// The number of the picture whose output has this name; 0 where that is none of the run's.
size_t numberOfOutput(const std::string& name, const cBatch& batch, const std::string& extension) {
    if (!name.starts_with(batch.txtName)) return 0;
    int32_t number = 0;
    std::from_chars(name.data() + batch.txtName.size(), name.data() + name.size(), number);
    const bool isOne = number > 0 && static_cast<size_t>(number) <= batch.lvSelected.size() &&
                       name == batch.outputName({}, number, extension);
    return isOne ? static_cast<size_t>(number) : 0;
}

/// Refuses a run that would replace a picture of its own, or read as a picture what it has written
/// itself.
void protectPictures(const cBatch& batch, const std::string& extension) {
    const bool overwrite = batch.chkOverwrite != 0;
    std::map<FileIdentity, std::string> outputs;
    for (size_t i = 1; overwrite && i <= batch.lvSelected.size(); ++i) {
        const std::string output =
            batch.outputName(batch.txtDestination, static_cast<int32_t>(i), extension);
        if (const auto identity = identityOf(output)) outputs.emplace(*identity, output);
    }
    const auto destination = identityOf(batch.txtDestination);
    for (size_t i = 1; i <= batch.lvSelected.size(); ++i) {
        const std::string& input = batch.lvSelected[i - 1].Tag;
        if (const auto identity = identityOf(input)) {
            const auto found = outputs.find(*identity);
            if (found != outputs.end())
                refuseStart(
                    fmt::format("'{}' is a picture of this run and has the name of its output "
                                "'{}'; expected another --name or --to",
                                input, found->second));
            continue;
        }
        // Not there yet: it may come to be by this very run. Without leave to overwrite, its own
        // output at least comes too late to be read.
        const fs::path end = behindLinks(input);
        const size_t number = numberOfOutput(end.filename().native(), batch, extension);
        if (number == 0 || (number == i && !overwrite)) continue;
        const fs::path folder = end.parent_path();
        if (identityOf(folder.empty() ? "." : folder.native()) == destination)
            refuseStart(
                fmt::format("'{}' is a picture of this run, is not there, and has the name of an "
                            "output; expected another --name or --to",
                            input));
    }
}

/// Refuses to write what the run tells, the value of `option`, over a picture, a list or an output
/// of the run.
void protectFrom(const std::string& option, const std::string& file, const cBatch& batch,
                 const CommandLine& line, const std::string& extension) {
    if (file.empty()) return;
    const auto refuse = [&](const std::string& what) {
        refuseStart(
            fmt::format("{}: '{}' is {} of this run; expected another file", option, file, what));
    };
    std::error_code ignored;
    const fs::path folder = fs::weakly_canonical(
        fs::path(file).parent_path().empty() ? "." : fs::path(file).parent_path(), ignored);
    const std::string name = fs::path(file).filename();
    const bool inDestination =
        identityOf(folder.string()) && identityOf(folder.string()) == identityOf(line.to);
    for (size_t i = 1; inDestination && i <= batch.lvSelected.size(); ++i)
        if (name == batch.outputName({}, static_cast<int32_t>(i), extension)) refuse("an output");

    const auto written = identityOf(file);
    if (!written || !fs::is_regular_file(file, ignored)) return;
    for (size_t i = 1; i <= batch.lvSelected.size(); ++i)
        if (identityOf(batch.outputName(batch.txtDestination, static_cast<int32_t>(i),
                                        extension)) == written)
            refuse("an output");
    for (const BasketItem& item : batch.lvSelected)
        if (identityOf(item.Tag) == written) refuse("a picture");
    for (const GivenPictures& source : line.pictures)
        if (source.kind != GivenPictures::Kind::path && identityOf(source.value) == written)
            refuse("a picture list");
    for (const FunctionSource& source : line.functions)
        if (source.kind == FunctionSource::Kind::list && identityOf(source.value) == written)
            refuse("a function list");
}

void protectFromReports(const cBatch& batch, const CommandLine& line,
                        const std::string& extension) {
    if (line.report != "-") protectFrom("--report", line.report, batch, line, extension);
    protectFrom("--failed-list", line.failedList, batch, line, extension);
    std::error_code ignored;
    if (!line.failedList.empty() &&
        (line.failedList == line.report || fs::equivalent(line.failedList, line.report, ignored)))
        refuseStart(
            fmt::format("--failed-list: '{}' is the report of this run; expected another "
                        "file",
                        line.failedList));
}

}  // namespace

void prepareRun(cBatch& batch, const CommandLine& line) {
    batch.cboFormat.index = formatRowOf(line.format);
    addFunctions(batch, line);
    // --apply previews on the sample and --functions does not; a run starts with a new program's
    // random numbers, whichever named its functions.
    batch.cFilter.random = RandomGenerator();
    setDestination(batch, line.to);
    batch.chkOverwrite = line.onExists == OnExists::overwrite ? 1 : 0;
    batch.lvSelected = collectPictures(line);
    if (batch.lvSelected.empty())
        refuseStart(
            "there are no pictures; expected files, folders with pictures, --pictures or --from");
    const std::string extension = batch.formatExtension();
    setName(batch, line.name, extension);
    checkCounts(batch, line.windowMode);
    if (!line.windowMode) protectPictures(batch, extension);
    protectFromReports(batch, line, extension);
}

}  // namespace tessarine
