#include "runner/journal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>

#include "pixels/failures.h"
#include "runner/json_text.h"
#include "runner/refusal.h"

namespace tessarine {

namespace {

using Json = nlohmann::ordered_json;
using namespace std::chrono_literals;

constexpr std::string_view header = "{\"tessarine-journal\":1}\n";

Json jsonOf(const SourceRecord& source) {
    return {{"hash", source.hash},
            {"bytes", source.mark.size},
            {"modified", source.mark.changedContent},
            {"changed", source.mark.changedAtAll},
            {"device", source.mark.device},
            {"inode", source.mark.inode}};
}

SourceRecord sourceOf(const Json& json) {
    SourceRecord source;
    source.hash = json.at("hash").get<std::string>();
    source.mark.size = numberOfJson<int64_t>(json.at("bytes"));
    source.mark.changedContent = numberOfJson<int64_t>(json.at("modified"));
    source.mark.changedAtAll = numberOfJson<int64_t>(json.at("changed"));
    source.mark.device = numberOfJson<uint64_t>(json.at("device"));
    source.mark.inode = numberOfJson<uint64_t>(json.at("inode"));
    return source;
}

JournalEntry entryOf(const Json& json) {
    JournalEntry entry;
    if (json.contains("begun")) {
        entry.state = JournalEntry::State::begun;
        entry.output = textOfJson(json.at("begun"));
        return entry;
    }
    if (json.contains("left")) {
        entry.output = textOfJson(json.at("left"));
        return entry;
    }
    entry.state = JournalEntry::State::done;
    entry.output = textOfJson(json.at("done"));
    entry.number = numberOfJson<int32_t>(json.at("number"));
    entry.input = textOfJson(json.at("input"));
    entry.key = json.at("key").get<std::string>();
    for (const Json& source : json.at("sources")) {
        entry.sources.emplace_back();
        if (!source.is_null()) entry.sources.back() = sourceOf(source);
    }
    entry.settled = json.at("settled").get<bool>();
    entry.mark.bytes = numberOfJson<int64_t>(json.at("bytes"));
    entry.mark.modified = numberOfJson<int64_t>(json.at("modified"));
    if (json.contains("changed")) entry.mark.changed = numberOfJson<int64_t>(json.at("changed"));
    return entry;
}

/// Reads as much as there is, up to a size.
/// \throws StatementFailed
std::string bytesAt(int file, off_t at, size_t most) {
    std::string bytes(most, '\0');
    for (;;) {
        const ssize_t got = ::pread(file, bytes.data(), bytes.size(), at);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw StatementFailed(std::strerror(errno));
        bytes.resize(static_cast<size_t>(got));
        return bytes;
    }
}

/// Keeps others who append away.
class AppendLock {
  public:
    explicit AppendLock(int file) : file_(file) {
        while (::flock(file_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~AppendLock() { ::flock(file_, LOCK_UN); }
    AppendLock(const AppendLock&) = delete;
    AppendLock& operator=(const AppendLock&) = delete;

  private:
    int file_;
};

}  // namespace

std::string lineOf(const JournalEntry& entry) {
    const Json output = jsonOfText(entry.output);
    if (entry.state == JournalEntry::State::begun) return oneLine({{"begun", output}});
    if (entry.state == JournalEntry::State::left) return oneLine({{"left", output}});
    Json sources = Json::array();
    for (const std::optional<SourceRecord>& source : entry.sources)
        sources.push_back(source ? jsonOf(*source) : Json());
    Json line = {{"done", output},
                 {"number", entry.number},
                 {"input", jsonOfText(entry.input)},
                 {"key", entry.key},
                 {"sources", std::move(sources)},
                 {"settled", entry.settled},
                 {"bytes", entry.mark.bytes},
                 {"modified", entry.mark.modified}};
    if (entry.mark.changed) line["changed"] = *entry.mark.changed;
    return oneLine(line);
}

std::optional<JournalEntry> entryOfLine(std::string_view line) {
    const Json json = Json::parse(line.begin(), line.end(), nullptr, false);
    if (json.is_discarded()) return std::nullopt;
    try {
        return entryOf(json);
    } catch (const Json::exception& failure) {
        throw StatementFailed(failure.what());
    }
}

Journal::Journal(std::string path, Use use) : path_(std::move(path)), use_(use) {
    struct stat status {};
    const bool exists = ::stat(path_.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) refuse("it is no regular file");
    if (!exists && use == Use::look) return;
    const int how = use == Use::append ? O_RDWR | O_APPEND | O_CREAT : O_RDONLY;
    file_ = Descriptor(::open(path_.c_str(), how | O_CLOEXEC | O_NOCTTY, 0666));
    if (!file_) refuse(std::strerror(errno));
    static_cast<void>(hasHeader());
}

Journal::~Journal() {
    if (synced_ != std::chrono::steady_clock::time_point())
        static_cast<void>(::fdatasync(file_.get()));
}

void Journal::refuse(const std::string& why) const {
    throw Refusal(ExitStatus::nothingStarts,
                  fmt::format("--resume: '{}' cannot be used: {}; expected a journal of earlier "
                              "runs, or a file that does not exist",
                              path_, why));
}

bool Journal::hasHeader() const {
    std::string start;
    try {
        start = bytesAt(file_.get(), 0, 512);
    } catch (const StatementFailed& failure) {
        refuse(failure.what());
    }
    // A killed run may have left a piece of the first line before the whole one.
    for (std::string_view rest = start;;) {
        if (rest.starts_with(header)) return true;
        if (header.starts_with(rest)) return false;
        const size_t end = rest.find('\n');
        if (end == 0 || end == std::string_view::npos || !header.starts_with(rest.substr(0, end)))
            refuse("it is no journal");
        rest.remove_prefix(end + 1);
    }
}

void Journal::read(const std::function<void(JournalEntry)>& each) const {
    if (!file_) return;
    constexpr size_t atATime = size_t{1} << 20;
    size_t number = 0;
    std::string rest;
    const auto take = [&](std::string_view line) {
        ++number;
        if (line.empty() || header.starts_with(line)) return;
        try {
            if (std::optional<JournalEntry> entry = entryOfLine(line)) each(std::move(*entry));
        } catch (const StatementFailed&) {
            refuse(fmt::format("line {} is none of a journal", number));
        }
    };
    try {
        for (off_t at = 0;;) {
            const std::string bytes = bytesAt(file_.get(), at, atATime);
            if (bytes.empty()) break;
            at += static_cast<off_t>(bytes.size());
            rest += bytes;
            size_t start = 0;
            for (size_t end; (end = rest.find('\n', start)) != std::string::npos; start = end + 1)
                take(std::string_view(rest).substr(start, end - start));
            rest.erase(0, start);
        }
    } catch (const StatementFailed& failure) {
        refuse(failure.what());
    }
    // A whole line whose end alone was lost.
    take(rest);
}

bool Journal::write(const std::string& line) const {
    const AppendLock lock(file_.get());
    struct stat status {};
    if (::fstat(file_.get(), &status) != 0) return false;
    std::string bytes;
    try {
        if (status.st_size > 0 && bytesAt(file_.get(), status.st_size - 1, 1) != "\n") bytes = "\n";
        if (!hasHeader()) bytes += header;
    } catch (const std::exception&) {
        return false;  // somebody made another file of it
    }
    bytes += line + "\n";
    ssize_t taken = 0;
    do
        taken = ::write(file_.get(), bytes.data(), bytes.size());
    while (taken < 0 && errno == EINTR);
    return taken == static_cast<ssize_t>(bytes.size());
}

void Journal::append(const JournalEntry& entry) {
    whole_ = write(lineOf(entry)) && whole_;
    // A power failure costs the lines of a second. More often would cost as much as the pictures.
    const auto now = std::chrono::steady_clock::now();
    if (now - synced_ < 1s) return;
    synced_ = now;
    static_cast<void>(::fdatasync(file_.get()));
}

}  // namespace tessarine
