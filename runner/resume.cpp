#include "runner/resume.h"

#include <algorithm>
#include <ctime>
#include <sys/stat.h>
#include <utility>

#include <fmt/format.h>

#include "batch/texts.h"
#include "imagefiles/picture_source.h"
#include "runner/content_hash.h"
#include "runner/refusal.h"

namespace tessarine {

namespace {

using SourceRecords = std::vector<std::optional<SourceRecord>>;

constexpr int64_t nanoseconds = 1'000'000'000;

int64_t inNanoseconds(const timespec& time) { return time.tv_sec * nanoseconds + time.tv_nsec; }

/// How an output stands on the disk; nothing where there is nothing. What is no file of its own,
/// like a link, was never left so by a run.
std::optional<OutputMark> markOfOutput(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode)) return OutputMark{-1, 0, std::nullopt};
    return OutputMark{status.st_size, inNanoseconds(status.st_mtim), inNanoseconds(status.st_ctim)};
}

/// Whether files were left alone for so long that a change from now on gives them other marks:
/// clocks of file systems go by steps, of up to two seconds.
bool areSettled(const FileMarks& marks) {
    constexpr int64_t longest = 2 * nanoseconds;
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    const int64_t now = inNanoseconds(time);
    return std::all_of(marks.begin(), marks.end(), [&](const std::optional<FileMark>& mark) {
        return !mark || now - std::max(mark->changedContent, mark->changedAtAll) >= longest;
    });
}

FileMarks marksOf(const PictureTask& task) { return marksNow(task.input, extensionOf(task.input)); }

/// The sources with hashes of their content. \return nothing where one cannot be read
std::optional<SourceRecords> hashed(const PictureTask& task, const FileMarks& marks) {
    std::vector<std::string> paths = companionPaths(task.input, extensionOf(task.input));
    paths.insert(paths.begin(), task.input);
    SourceRecords sources(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        if (!marks.at(i)) continue;
        const std::optional<std::string> hash = hashOfFile(paths[i]);
        if (!hash) return std::nullopt;
        sources[i] = SourceRecord{*marks[i], *hash};
    }
    return sources;
}

bool haveSameContent(const SourceRecords& first, const SourceRecords& second) {
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](const auto& one, const auto& other) {
                          return one.has_value() == other.has_value() &&
                                 (!one || one->hash == other->hash);
                      });
}

/// Takes the next line on an output into what is known of it. Runs at once on one journal may both
/// begin a picture, and the one that comes too late leaves it: what the other has made stays made.
void takeIn(JournalEntry entry, JournalEntry& known) {
    if (entry.state == JournalEntry::State::done)
        known = std::move(entry);
    else if (entry.state == JournalEntry::State::begun || known.state != JournalEntry::State::done)
        known.state = entry.state;
}

/// A stale output is replaced without being asked for, and so must not be a picture of the run.
void protectPictures(const cBatch& batch, const RunOrder& order) {
    std::map<std::pair<dev_t, ino_t>, const PictureTask*> stale;
    struct stat status {};
    for (const PictureTask& task : order.tasks)
        if (task.earlier == Earlier::stale && ::stat(task.output.c_str(), &status) == 0)
            stale.emplace(std::pair(status.st_dev, status.st_ino), &task);
    if (stale.empty()) return;
    for (const BasketItem& item : batch.lvSelected) {
        if (::stat(item.Tag.c_str(), &status) != 0) continue;
        const auto found = stale.find({status.st_dev, status.st_ino});
        if (found != stale.end())
            throw Refusal(ExitStatus::nothingStarts,
                          fmt::format("'{}' is a picture of this run and, by its journal, the "
                                      "output '{}' that is to be made again; expected another "
                                      "--name or --to",
                                      item.Tag, found->second->output));
    }
}

}  // namespace

Resumption::Resumption(const std::string& journal, Journal::Use use, const cBatch& batch,
                       RunOrder& order)
    : journal_(journal, use), recipe_(batch, order.metadata), order_(order) {
    std::unordered_map<std::string, size_t> places;
    for (size_t place = 0; place < order.tasks.size(); ++place)
        places.emplace(names_.of(order.tasks[place].output), place);
    std::unordered_map<size_t, JournalEntry> known;
    journal_.read([&](JournalEntry entry) {
        const auto found = places.find(entry.output);
        if (found != places.end()) takeIn(std::move(entry), known[found->second]);
    });
    for (auto& [place, entry] : known)
        order.tasks[place].earlier = judge(order.tasks[place], entry);
    protectPictures(batch, order);
    if (use == Journal::Use::look) return;
    order.onBegin = [this](size_t place) { begin(place); };
    order.onEnd = [this](size_t place, const PictureReport& entry) { end(place, entry); };
}

Earlier Resumption::judge(const PictureTask& task, JournalEntry& known) {
    const std::optional<OutputMark> mark = markOfOutput(task.output);
    if (!mark) return Earlier::nothing;
    if (known.state == JournalEntry::State::begun) return Earlier::stale;
    // Left behind another run's end, it may stand there as that run had made it.
    if (known.state == JournalEntry::State::left && !(*mark == known.mark)) return Earlier::nothing;
    known.state = JournalEntry::State::done;
    const bool isUpToDate =
        *mark == known.mark && known.key == recipe_.keyOf(task) && sourcesAreAsBefore(task, known);
    return isUpToDate ? Earlier::upToDate : Earlier::stale;
}

bool Resumption::sourcesAreAsBefore(const PictureTask& task, JournalEntry& known) {
    const FileMarks marks = marksOf(task);
    if (marks.size() != known.sources.size()) return false;
    bool isSure = known.settled;
    for (size_t i = 0; i < marks.size(); ++i) {
        if (marks[i].has_value() != known.sources[i].has_value()) return false;
        if (!marks[i]) continue;
        const FileMark& before = known.sources[i]->mark;
        if (marks[i]->size != before.size || marks[i]->changedContent != before.changedContent)
            return false;
        isSure = isSure && *marks[i] == before;
    }
    if (isSure) return true;
    const bool settled = areSettled(marks);
    const std::optional<SourceRecords> sources = hashed(task, marks);
    if (!sources || !haveSameContent(*sources, known.sources)) return false;
    // From the next time on the marks will do.
    if (settled && journal_.use() == Journal::Use::append) {
        known.sources = *sources;
        known.settled = true;
        journal_.append(known);
    }
    return true;
}

void Resumption::begin(size_t place) {
    const PictureTask& task = order_.tasks[place];
    UnderWay& picture = underWay_[place];
    picture.marks = marksOf(task);
    picture.settled = areSettled(picture.marks);
    if (!picture.settled)
        if (std::optional<SourceRecords> sources = hashed(task, picture.marks))
            picture.hashed = std::move(*sources);
    const bool isOwn = task.earlier == Earlier::stale;
    picture.isNew = !isOwn && !markOfOutput(task.output);
    picture.claimed = isOwn || picture.isNew;
    // Were it not told of an own output, what the journal says of it would hold on for what this
    // run puts in its place and, being killed, tells no more.
    if (picture.claimed) tell(task, JournalEntry::State::begun);
}

void Resumption::end(size_t place, const PictureReport& entry) {
    const auto found = underWay_.find(place);
    if (found == underWay_.end()) return;
    const UnderWay picture = std::move(found->second);
    underWay_.erase(found);
    const PictureTask& task = order_.tasks[place];
    if (entry.status != PictureReport::Status::saved) {
        if (picture.isNew) tell(task, JournalEntry::State::left);
        return;
    }
    if (const std::optional<JournalEntry> done = record(task, picture, entry))
        journal_.append(*done);
    else if (!picture.claimed)
        tell(task, JournalEntry::State::begun);
}

std::optional<JournalEntry> Resumption::record(const PictureTask& task, const UnderWay& picture,
                                               const PictureReport& entry) {
    // The file was just read, and is most likely in memory still.
    std::optional<SourceRecords> sources = hashed(task, picture.marks);
    if (!sources || marksOf(task) != picture.marks) return std::nullopt;
    if (!picture.settled && !haveSameContent(*sources, picture.hashed)) return std::nullopt;
    const std::optional<OutputMark> mark = markOfOutput(task.output);
    if (!mark || mark->bytes != entry.bytes) return std::nullopt;
    JournalEntry done;
    done.state = JournalEntry::State::done;
    done.output = names_.of(task.output);
    done.number = task.number;
    done.input = task.input;
    done.key = recipe_.keyOf(task);
    done.sources = std::move(*sources);
    done.settled = picture.settled;
    done.mark = *mark;
    return done;
}

void Resumption::tell(const PictureTask& task, JournalEntry::State state) {
    JournalEntry entry;
    entry.state = state;
    entry.output = names_.of(task.output);
    journal_.append(entry);
}

}  // namespace tessarine
