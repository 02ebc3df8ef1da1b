#include "runner/shards.h"

#include <array>
#include <charconv>
#include <system_error>

#include <fmt/format.h>

#include "runner/refusal.h"

namespace tessarine {

namespace {

[[noreturn]] void refuse(const std::string& why) {
    throw Refusal(ExitStatus::commandLine, "--shard: " + why);
}

/// A whole number from 0, in digits alone.
std::optional<int32_t> wholeNumber(std::string_view text) {
    int32_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc() || end != text.data() + text.size() || number < 0)
        return std::nullopt;
    return number;
}

/// By how much the shares are turned in a row of neighbours: mixed bits of the row's number, 0 to
/// count - 1. Shares of one run would not fit together if this ever changed.
size_t turnOf(size_t row, int32_t count) {
    uint64_t bits = (row + 1) * 0x9E3779B97F4A7C15U;
    bits = (bits ^ (bits >> 32)) * 0xD6E8FEB86659FD93U;
    bits = (bits ^ (bits >> 32)) * 0xD6E8FEB86659FD93U;
    return static_cast<size_t>((bits ^ (bits >> 32)) % static_cast<uint64_t>(count));
}

/// A number that a scheduler tells in a variable.
int32_t numberIn(const char* variable, int32_t lowest, const std::string& meaning,
                 const Environment& environment) {
    const char* value = environment(variable);
    if (value == nullptr)
        refuse(fmt::format("auto: {} is not set; expected {} in it", variable, meaning));
    const std::optional<int32_t> number = wholeNumber(value);
    if (!number || *number < lowest)
        refuse(fmt::format("auto: {} is '{}'; expected {}, a number from {}", variable, value,
                           meaning, lowest));
    return *number;
}

Shard taskOfSlurm(const Environment& environment) {
    const auto number = [&](const char* variable, int32_t lowest, const char* meaning) {
        return numberIn(variable, lowest, meaning, environment);
    };
    const int32_t task = number("SLURM_ARRAY_TASK_ID", 0, "the task's number");
    const int32_t first = number("SLURM_ARRAY_TASK_MIN", 0, "the first task's number");
    const int32_t last = number("SLURM_ARRAY_TASK_MAX", first, "the last task's number");
    const int32_t step = number("SLURM_ARRAY_TASK_STEP", 1, "the step between tasks");
    const int32_t count = number("SLURM_ARRAY_TASK_COUNT", 1, "the number of tasks");
    // An array such as 1,5,6 has places that none of its tasks would take.
    const bool isEven = (last - first) % step == 0 && (last - first) / step == count - 1;
    if (!isEven || task < first || task > last || (task - first) % step != 0)
        refuse(
            fmt::format("auto: task {} of {} from {} to {} in steps of {} has no place among them; "
                        "expected an array in even steps, or K/N",
                        task, count, first, last, step));
    return {(task - first) / step, count};
}

/// A task that is told its place, from 0, and the number of places.
Shard taskOf(const char* place, const char* places, const Environment& environment) {
    const int32_t index = numberIn(place, 0, "the task's place, from 0", environment);
    const int32_t count = numberIn(places, 1, "the number of tasks", environment);
    if (index >= count)
        refuse(fmt::format("auto: {} is {} and {} is {}; expected a place from 0 to {}", place,
                           index, places, count, count - 1));
    return {index, count};
}

struct Scheduler {
    const char* name;
    const char* sign;  ///< the variable by which it is known
    Shard (*taskIn)(const Environment& environment);
};

constexpr std::array<Scheduler, 3> schedulers{{
    {"a Slurm job array", "SLURM_ARRAY_TASK_ID", taskOfSlurm},
    {"an Indexed Job of Kubernetes", "JOB_COMPLETION_INDEX",
     [](const Environment& environment) {
         return taskOf("JOB_COMPLETION_INDEX", "TESSARINE_SHARDS", environment);
     }},
    {"an array job of AWS Batch", "AWS_BATCH_JOB_ARRAY_INDEX",
     [](const Environment& environment) {
         return taskOf("AWS_BATCH_JOB_ARRAY_INDEX", "AWS_BATCH_JOB_ARRAY_SIZE", environment);
     }},
}};

Shard ownTask(const Environment& environment) {
    const Scheduler* found = nullptr;
    for (const Scheduler& scheduler : schedulers) {
        if (environment(scheduler.sign) == nullptr) continue;
        if (found != nullptr)
            refuse(
                fmt::format("auto: both {} and {} are set, of {} and {}; expected one of them, "
                            "or K/N",
                            found->sign, scheduler.sign, found->name, scheduler.name));
        found = &scheduler;
    }
    if (found == nullptr)
        refuse(
            fmt::format("auto: this is no task of an array; expected {}, {} or {} in the "
                        "environment, or K/N",
                        schedulers[0].sign, schedulers[1].sign, schedulers[2].sign));
    return found->taskIn(environment);
}

}  // namespace

std::vector<size_t> Shard::placesIn(size_t pictures) const {
    const auto width = static_cast<size_t>(count);
    std::vector<size_t> places;
    places.reserve(pictures / width + 1);
    for (size_t row = 0; row * width < pictures; ++row) {
        const auto turned = static_cast<size_t>(index) + width - turnOf(row, count);
        const size_t place = row * width + turned % width;
        if (place < pictures) places.push_back(place);
    }
    return places;
}

int32_t Shard::ownerOf(size_t place, int32_t count) {
    const auto width = static_cast<size_t>(count);
    return static_cast<int32_t>((place % width + turnOf(place / width, count)) % width);
}

std::string Shard::text() const { return fmt::format("{}/{}", index, count); }

std::optional<Shard> Shard::fromText(std::string_view text) {
    const size_t stroke = text.find('/');
    if (stroke == std::string_view::npos) return std::nullopt;
    const auto index = wholeNumber(text.substr(0, stroke));
    const auto count = wholeNumber(text.substr(stroke + 1));
    if (!index || !count || *index >= *count) return std::nullopt;
    return Shard{*index, *count};
}

Shard shardOf(const std::string& text, const Environment& environment) {
    if (text == "auto") return ownTask(environment);
    if (const std::optional<Shard> shard = Shard::fromText(text)) return *shard;
    refuse(fmt::format("'{}' is no share; expected K/N with K from 0 to N-1, such as 0/8, or auto",
                       text));
}

}  // namespace tessarine
