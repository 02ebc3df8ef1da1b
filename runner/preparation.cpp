#include "runner/preparation.h"

#include <filesystem>
#include <limits>
#include <unistd.h>

#include <fmt/format.h>

#include "runner/function_arguments.h"
#include "runner/pictures.h"
#include "runner/refusal.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

constexpr size_t longestFileName = 255;
constexpr size_t most16Bits = std::numeric_limits<int16_t>::max();

[[noreturn]] void refuseStart(const std::string& why) {
    throw Refusal(ExitStatus::nothingStarts, why);
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

}  // namespace

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

OutputNames prepareRun(cBatch& batch, const CommandLine& line) {
    batch.cboFormat.index = formatRowOf(line.format);
    addFunctions(batch, line);
    // --apply previews on the sample and --functions does not; a run starts with a new program's
    // random numbers, whichever named its functions.
    batch.cFilter.random = RandomGenerator();
    setDestination(batch, line.to);
    batch.chkOverwrite = line.onExists == OnExists::overwrite ? 1 : 0;
    GivenBasket basket = collectPictures(line);
    refuseOutputsAmongSources(basket, line);
    batch.lvSelected = std::move(basket.pictures);
    if (batch.lvSelected.empty())
        refuseStart(
            "there are no pictures; expected files, folders with pictures, --pictures or --from");
    setName(batch, line.name, batch.formatExtension());
    checkCounts(batch, line.windowMode);
    return OutputNames(batch, line, std::move(basket.places));
}

}  // namespace tessarine
