#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/picture_task.h"
#include "runner/shards.h"

namespace tessarine {

/// One place where pictures come from, in the order of the command line.
struct GivenPictures {
    enum class Kind {
        path,  ///< a file, or a folder
        list,  ///< a picture list
        from,  ///< one path a line, "-" for standard input
    };
    Kind kind;
    std::string value;
};

/// One addition to the chain, in the order of the command line.
struct FunctionSource {
    enum class Kind {
        list,   ///< a function list
        apply,  ///< one catalogue function with its inputs
    };
    Kind kind;
    std::string value;
};

/// What is asked for.
struct CommandLine {
    std::vector<GivenPictures> pictures;
    bool recursive = false;
    bool nulBetweenPaths = false;

    std::vector<FunctionSource> functions;
    std::optional<int16_t> degrees;
    std::string invert;  ///< letters of "rgb"
    std::string kill;

    std::string to;
    std::string name = "Sample";
    std::string format = "jpg-good";
    OnExists onExists = OnExists::keep;

    bool windowMode = false;
    std::optional<Shard> shard;         ///< nothing for the whole basket
    std::optional<size_t> maxFailures;  ///< behind so many no further picture is begun
    int jobs = 0;                    ///< pictures in flight; 0 for as many as the machine suggests
    int threads = 0;                 ///< threads a filter; likewise
    std::optional<double> timeout;   ///< seconds that a picture may take to be read or written
    std::optional<uint32_t> memory;  ///< MiB that reading or writing a picture may take
    bool verbose = false;
    bool dryRun = false;
    bool quiet = false;
    bool progress = false;
    std::string report;      ///< a file, "-" for standard output, empty for none
    std::string failedList;  ///< a picture list to be written; empty for none

    std::vector<std::string> reportsToMerge;  ///< where these are given, nothing is run

    bool listFunctions = false;
    bool listFormats = false;
};

/// Reads the command line.
/// \return nothing where help or version was asked for and has been printed
/// \throws Refusal (commandLine) where it is wrong
std::optional<CommandLine> readCommandLine(int argc, const char* const* argv);

/// The format row of a number 0 to 17, a row's text, or a short name, upper and lower case alike.
/// \throws Refusal (commandLine) where it is none of these
int16_t formatRowOf(const std::string& text);

}  // namespace tessarine
