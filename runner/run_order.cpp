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

}  // namespace

RunOrder orderOf(const cBatch& batch, const CommandLine& line) {
    RunOrder order;
    order.onExists = line.onExists;
    if (line.maxFailures) order.mostFailures = *line.maxFailures;
    const Shard shard = line.shard.value_or(Shard());
    const std::string destination = asFolder(batch.txtDestination);
    const std::string extension = batch.formatExtension();
    const std::vector<size_t> places = shard.placesIn(batch.lvSelected.size());
    order.tasks.reserve(places.size());
    for (const size_t place : places) {
        const auto number = static_cast<int32_t>(place + 1);
        order.tasks.push_back({number, batch.lvSelected[place].Tag,
                               batch.outputName(destination, number, extension)});
    }
    return order;
}

std::string planOf(const RunOrder& order) {
    std::string plan;
    for (const PictureTask& task : order.tasks) {
        std::error_code ignored;
        plan += onOneLine(task.input) + " -> " + onOneLine(task.output);
        if (!std::filesystem::exists(task.input, ignored)) plan += " (no such picture)";
        if (std::filesystem::exists(task.output, ignored)) plan += noteOnExisting(order.onExists);
        plan += "\n";
    }
    return plan;
}

}  // namespace tessarine
