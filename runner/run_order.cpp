#include "runner/run_order.h"

#include <filesystem>
#include <string>
#include <vector>

#include "runner/messages.h"
#include "runner/shards.h"

namespace tessarine {

namespace {

const char* noteOnExisting(OnExists wish) {
    switch (wish) {
        case OnExists::keep:
            return " (exists, kept)";
        case OnExists::overwrite:
            return " (exists, replaced)";
        case OnExists::fail:
            break;
    }
    return " (exists, fails)";
}

/// What becomes of a picture whose output is there. A folder is never replaced, nor kept for one.
const char* noteOn(const PictureTask& task, OnExists wish) {
    std::error_code ignored;
    if (std::filesystem::is_directory(task.output, ignored)) return noteOnExisting(OnExists::fail);
    return noteOnExisting(task.earlier == Earlier::stale ? OnExists::overwrite : wish);
}

}  // namespace

RunOrder orderOf(const OutputNames& outputs, const CommandLine& line) {
    RunOrder order;
    order.onExists = line.onExists;
    order.metadata = line.metadata;
    if (line.maxFailures) order.mostFailures = *line.maxFailures;
    const Shard shard = line.shard.value_or(Shard());
    const std::vector<size_t> places = shard.placesIn(outputs.count());
    order.tasks.reserve(places.size());
    for (const size_t place : places)
        order.tasks.push_back(outputs.taskOf(place));
    return order;
}

std::string planOf(const RunOrder& order) {
    std::string plan;
    for (const PictureTask& task : order.tasks) {
        std::error_code ignored;
        plan += onOneLine(task.input) + " -> " + onOneLine(task.output);
        if (!std::filesystem::exists(task.input, ignored)) plan += " (no such picture)";
        if (task.earlier == Earlier::upToDate)
            plan += " (up to date, kept)";
        else if (std::filesystem::exists(task.output, ignored))
            plan += noteOn(task, order.onExists);
        plan += "\n";
    }
    return plan;
}

}  // namespace tessarine
