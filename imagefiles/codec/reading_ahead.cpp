#include "imagefiles/codec/reading_ahead.h"

#include <algorithm>
#include <atomic>
#include <ctime>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "imagefiles/picture_source.h"

namespace tessarine {

namespace {

using namespace std::chrono_literals;

/// Files that are read at the same time: one, and the next where decoding takes longer than
/// everything else.
constexpr size_t mostThreads = 2;
constexpr auto tick = 50ms;
constexpr auto quietTime = 200ms;

constexpr int64_t nanosecondsOf(const timespec& time) {
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

FileMark markIn(const struct stat& status) {
    return {static_cast<uint64_t>(status.st_dev), static_cast<uint64_t>(status.st_ino),
            static_cast<int64_t>(status.st_size), nanosecondsOf(status.st_mtim),
            nanosecondsOf(status.st_ctim)};
}

bool areSettled(const FileMarks& marks, std::chrono::nanoseconds settled) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const int64_t latest = nanosecondsOf(now) - settled.count();
    return std::all_of(marks.begin(), marks.end(), [&](const auto& mark) {
        return !mark || std::max(mark->changedContent, mark->changedAtAll) <= latest;
    });
}

}  // namespace

std::optional<FileMark> markOf(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0) return std::nullopt;
    return markIn(status);
}

FileMarks marksNow(const std::string& path, const std::string& extension) {
    std::vector<std::string> paths = companionPaths(path, extension);
    paths.insert(paths.begin(), path);
    FileMarks marks;
    for (const std::string& one : paths) {
        struct stat status {};
        marks.emplace_back();
        if (::stat(one.c_str(), &status) == 0) marks.back() = markIn(status);
    }
    return marks;
}

struct ReadingAhead::Item {
    Item(ExpectedFile expected, Admission& admission)
        : file(std::move(expected)), place(std::make_unique<Admission::Place>(admission)) {}

    enum class State { waiting, reading, done };

    const ExpectedFile file;
    std::atomic<bool> off = false;
    State state = State::waiting;  ///< guarded, as what follows is until it is done
    std::unique_ptr<Admission::Place> place;
    FileMarks marks;
    ReadOutcome outcome;
    bool isGood = false;  ///< the files had been as they were for long enough
};

ReadingAhead::~ReadingAhead() {
    {
        const std::lock_guard lock(guard_);
        ending_ = true;
        for (const std::shared_ptr<Item>& item : items_)
            item->off = true;
        items_.clear();
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

void ReadingAhead::expect(const std::vector<ExpectedFile>& files) {
    std::deque<std::shared_ptr<Item>> dropped;
    {
        const std::lock_guard lock(guard_);
        dropped.swap(items_);
        for (const ExpectedFile& file : files) {
            const auto known = std::find_if(dropped.begin(), dropped.end(),
                                            [&](const auto& item) { return item->file == file; });
            if (known != dropped.end()) {
                items_.push_back(std::move(*known));
                dropped.erase(known);
            } else {
                items_.push_back(std::make_shared<Item>(file, admission_));
            }
        }
        for (const std::shared_ptr<Item>& item : dropped)
            item->off = true;
    }
    if (files.empty())
        placeOfTurn_.reset();
    else if (placeOfTurn_ == nullptr)
        placeOfTurn_ = std::make_unique<Admission::Place>(admission_);
    if (threads_.size() < std::min(files.size(), mostThreads)) addThread();
    changed_.notify_all();
}

void ReadingAhead::addThread() {
    try {
        threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // Files are read at their turn then.
        const std::lock_guard lock(guard_);
        if (threads_.empty()) items_.clear();
    }
}

void ReadingAhead::work() {
    std::unique_lock lock(guard_);
    for (;;) {
        std::shared_ptr<Item> item;
        changed_.wait(lock, [&] {
            const auto next = std::find_if(items_.begin(), items_.end(), [](const auto& one) {
                return one->state == Item::State::waiting;
            });
            if (next != items_.end()) item = *next;
            return ending_ || item != nullptr;
        });
        if (ending_) return;
        item->state = Item::State::reading;
        lock.unlock();
        FileMarks marks;
        ReadOutcome outcome = read_(
            item->file, *item->place, [&] { return item->off.load(); }, marks);
        const bool isGood = !marks.empty() && marks[0] && areSettled(marks, settled_);
        lock.lock();
        item->marks = std::move(marks);
        item->outcome = std::move(outcome);
        item->isGood = isGood;
        item->state = Item::State::done;
        changed_.notify_all();
        // The last owner of a picture that nobody wants lets go of its memory without the lock.
        lock.unlock();
        item.reset();
        lock.lock();
    }
}

std::optional<ReadOutcome> ReadingAhead::take(const std::string& path, const std::string& extension,
                                              const std::function<void()>& meanwhile) {
    // The turn of the picture before this one is over.
    if (placeOfTurn_ != nullptr) placeOfTurn_ = std::make_unique<Admission::Place>(admission_);
    std::shared_ptr<Item> item;
    {
        std::unique_lock lock(guard_);
        const auto found = std::find_if(items_.begin(), items_.end(), [&](const auto& one) {
            return one->file == ExpectedFile{path, extension};
        });
        if (found == items_.end()) return std::nullopt;
        item = *found;
        items_.erase(found);
        if (item->state == Item::State::waiting) return std::nullopt;
        item->place->hurry();
        const auto start = std::chrono::steady_clock::now();
        while (item->state != Item::State::done) {
            changed_.wait_for(lock, tick);
            if (!meanwhile || std::chrono::steady_clock::now() - start <= quietTime) continue;
            lock.unlock();
            meanwhile();
            lock.lock();
        }
    }
    // A picture for which memory did not suffice may have had it taken by its company.
    if (!item->isGood || item->outcome.error == FileError::tooLarge ||
        marksNow(path, extension) != item->marks)
        return std::nullopt;
    placeOfTurn_ = std::move(item->place);
    return std::move(item->outcome);
}

}  // namespace tessarine
