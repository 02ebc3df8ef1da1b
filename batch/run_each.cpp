#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "batch/batch.h"
#include "batch/job_threads.h"
#include "batch/shortage_watch.h"
#include "batch/texts.h"
#include "imagefiles/disk.h"
#include "pixels/pixel_memory.h"

// The run with each picture by itself.

namespace tessarine {

namespace {

using namespace std::chrono_literals;

PictureReport failed(PictureReport entry, const std::string& error, const std::string& message) {
    entry.status = PictureReport::Status::failed;
    entry.error = error;
    entry.message = message;
    return entry;
}

PictureReport shortOfMemory(PictureReport entry) {
    return failed(std::move(entry), std::string(errorClass(FileError::tooLarge)),
                  ShortageWatch::message);
}

/// The end of a picture whose output is there already and is not to be replaced.
PictureReport outputExists(PictureReport entry, OnExists wish) {
    if (wish == OnExists::fail) {
        const std::string message = "the output " + entry.output + " exists";
        return failed(std::move(entry), "exists", message);
    }
    entry.status = PictureReport::Status::kept;
    return entry;
}

WriteOutcome writeTo(OutputFile& file, PictureFiles& files, const PictureHolder& picture,
                     const std::string& extension, int16_t formatIndex) {
    try {
        return files.write(savedBitmap(picture, extension), extension, formatIndex, file);
    } catch (const MemoryFailed& failure) {
        return {FileError::tooLarge, failure.what()};
    }
}

/// The filter engine of picture `number`. Its clock stands still, so that no report by row is ever
/// due and none can fail, and its random numbers hang on the number alone; those of picture 1 are
/// a new program's.
cBitFilter engineFor(int32_t number) {
    // Draws from one picture's start to the next. Being odd, it leads to all 2^24 states before one
    // comes again; being large, it keeps pictures that follow each other apart.
    constexpr uint64_t drawsApart = 10368889;
    cBitFilter engine;
    engine.timeGetTime = [] { return 0U; };
    engine.random = RandomGenerator().after((static_cast<uint64_t>(number) - 1) * drawsApart);
    return engine;
}

/// What a picture's program has for a platform: moments of giving way are the owner's, where it is
/// the owner's thread that works.
class BehindTheScenes : public SilentPlatform {
  public:
    explicit BehindTheScenes(Platform* owner) : owner_(owner) {}
    void giveWay() override {
        if (owner_ != nullptr) owner_->giveWay();
    }

  private:
    Platform* owner_;
};

/// Where job threads lay down what the owner's thread is to hear.
class Mailbox {
  public:
    struct Mail {
        std::vector<std::pair<size_t, PictureReport>> entries;  ///< with their tasks' places
        std::vector<int32_t> percents;
    };

    void put(size_t place, PictureReport entry) {
        {
            const std::lock_guard lock(guard_);
            mail_.entries.emplace_back(place, std::move(entry));
        }
        arrived_.notify_one();
    }
    void put(int32_t percent) {
        const std::lock_guard lock(guard_);
        mail_.percents.push_back(percent);
    }
    /// What has come; waits for an entry as long as told.
    Mail take(std::chrono::milliseconds patience) {
        std::unique_lock lock(guard_);
        arrived_.wait_for(lock, patience, [this] { return !mail_.entries.empty(); });
        return std::exchange(mail_, {});
    }

  private:
    std::mutex guard_;
    std::condition_variable arrived_;
    Mail mail_;
};

}  // namespace

/// What rows leave in the working state for the rows after them.
struct cBatch::RowState {
    std::array<int32_t, 3> funcParam;
    std::array<int32_t, 2> funcColor;
    bool funcOption;
    std::string funcStyle;
    float pickRelX;
    float pickRelY;
};

cBatch::RowState cBatch::rowState() const {
    return {funcParam, funcColor, funcOption, funcStyle, pickRelX, pickRelY};
}

void cBatch::restoreRowState(const RowState& state) {
    funcParam = state.funcParam;
    funcColor = state.funcColor;
    funcOption = state.funcOption;
    funcStyle = state.funcStyle;
    pickRelX = state.pickRelX;
    pickRelY = state.pickRelY;
}

/// A picture to be processed by itself.
struct cBatch::Alone {
    PictureReport entry;  ///< with number, input and output
    std::string extension;
    int16_t formatIndex = 0;
    OnExists onExists = OnExists::keep;
};

std::unique_ptr<cBatch> cBatch::workshopFor(int32_t number, Platform& platform,
                                            PictureFiles& files) const {
    auto workshop = std::make_unique<cBatch>(platform, files);
    workshop->Ltray = Ltray;
    workshop->restoreRowState(rowState());
    // What rows read of the sheet, and the preview's size, by which picked points go.
    workshop->chkInvt = chkInvt;
    workshop->chkKill = chkKill;
    workshop->sbDegrees = sbDegrees;
    attempt([&] { workshop->iDst.setSize(iDst.width(), iDst.height()); });
    workshop->cFilter = engineFor(number);
    return workshop;
}

/// One run over pictures. All that anybody sees of it happens on the thread that made it.
class cBatch::EachRun {
  public:
    EachRun(cBatch& owner, const RunOrder& order)
        : owner_(owner),
          order_(order),
          jobs_(std::clamp<size_t>(static_cast<size_t>(std::max(owner.jobs, 1)), 1,
                                   std::max<size_t>(order.tasks.size(), 1))),
          isAlone_(jobs_ == 1),
          platform_(isAlone_ ? &owner.platform_ : nullptr),
          threads_(isAlone_ ? 0 : jobs_) {}

    void run() {
        owner_.files_.prepareFor(jobs_);
        for (size_t next = 0; next < order_.tasks.size(); ++next) {
            while (underWay_ == jobs_)
                hear();
            owner_.platform_.giveWay();
            if (owner_.stopRequested || failures_ >= order_.mostFailures) break;
            begin(next);
        }
        while (underWay_ > 0)
            hear();
    }

  private:
    /// What a picture in flight has of its own.
    struct Workshop {
        std::unique_ptr<PictureFiles> files;
        std::unique_ptr<cBatch> program;  ///< reads and writes through them
    };

    void begin(size_t place) {
        const PictureTask& task = order_.tasks[place];
        Alone picture;
        PictureReport& entry = picture.entry;
        entry.number = task.number;
        entry.input = task.input;
        entry.output = task.output;
        picture.extension = owner_.formatExtension();
        picture.formatIndex = static_cast<int16_t>(owner_.cboFormat.index);
        picture.onExists = order_.onExists;

        std::error_code ignored;
        if (std::filesystem::is_directory(entry.output, ignored))
            return tell(place, failed(entry, "cannot-write",
                                      "cannot replace " + entry.output + ": it is a folder"));
        if (picture.onExists != OnExists::overwrite && owner_.platform_.fileExists(entry.output))
            return tell(place, outputExists(entry, picture.onExists));

        auto workshop = std::make_shared<Workshop>();
        try {
            if (!isAlone_) workshop->files = owner_.files_.onePicture();
            workshop->program = owner_.workshopFor(task.number, platform_,
                                                   isAlone_ ? owner_.files_ : *workshop->files);
        } catch (const std::bad_alloc&) {
            return tell(place, shortOfMemory(entry));
        } catch (const MemoryFailed&) {
            return tell(place, shortOfMemory(entry));
        }
        if (isAlone_)
            workshop->program->cFilter.Progress = owner_.cFilter.Progress;
        else if (owner_.cFilter.Progress)
            workshop->program->cFilter.Progress = [this](int32_t& percent) {
                mailbox_.put(percent);
            };
        ++underWay_;
        threads_.start(
            [this, place, workshop = std::move(workshop), picture = std::move(picture)]() mutable {
                PictureReport done = process(*workshop->program, picture);
                workshop.reset();
                mailbox_.put(place, std::move(done));
            });
        if (isAlone_) hear();
    }

    /// Whatever goes wrong costs this picture.
    static PictureReport process(cBatch& workshop, const Alone& picture) {
        const auto start = std::chrono::steady_clock::now();
        PictureReport entry = picture.entry;
        try {
            entry = workshop.processAlone(picture);
        } catch (const std::bad_alloc&) {
            entry = shortOfMemory(entry);
        } catch (const std::exception& failure) {
            entry = failed(entry, std::string(errorClass(FileError::unreadable)),
                           std::string("it could not be processed: ") + failure.what());
        }
        entry.ms = millisecondsSince(start);
        return entry;
    }

    /// Waits a moment for the end of a picture, and lets events happen where none came.
    void hear() {
        constexpr auto patience = 50ms;
        Mailbox::Mail mail = mailbox_.take(patience);
        for (int32_t percent : mail.percents)
            if (owner_.cFilter.Progress) owner_.cFilter.Progress(percent);
        for (auto& [place, entry] : mail.entries) {
            --underWay_;
            tell(place, std::move(entry));
        }
        if (mail.entries.empty()) owner_.platform_.giveWay();
    }

    /// Adds the entry of the task at `place` to the report behind all those before it.
    void tell(size_t place, PictureReport entry) {
        if (entry.status == PictureReport::Status::failed) ++failures_;
        ended_.emplace(place, std::move(entry));
        for (auto at = ended_.begin(); at != ended_.end() && at->first == told_;
             at = ended_.erase(at)) {
            ++told_;
            owner_.report.add(std::move(at->second));
        }
    }

    cBatch& owner_;
    const RunOrder& order_;
    const size_t jobs_;
    const bool isAlone_;
    BehindTheScenes platform_;
    size_t underWay_ = 0;
    size_t failures_ = 0;
    size_t told_ = 0;
    std::map<size_t, PictureReport> ended_;  ///< those that wait for one before them
    Mailbox mailbox_;
    JobThreads threads_;  ///< the first to go
};

RunOrder cBatch::orderOfBasket() const {
    RunOrder order;
    order.onExists = chkOverwrite != 0 ? OnExists::overwrite : OnExists::keep;
    const std::string destination = asFolder(txtDestination);
    const std::string extension = formatExtension();
    for (const BasketItem& item : lvSelected) {
        const auto number = static_cast<int32_t>(order.tasks.size() + 1);
        order.tasks.push_back({number, item.Tag, outputName(destination, number, extension)});
    }
    return order;
}

void cBatch::BatchEach() { BatchEach(orderOfBasket()); }

void cBatch::BatchEach(const RunOrder& order) {
    stopRequested = false;
    report.clear();
    EachRun(*this, order).run();
    giveBackPixelMemory();
}

PictureReport cBatch::processAlone(const Alone& picture) {
    PictureReport entry = picture.entry;
    const ShortageWatch shortages;
    try {
        if (!loadIntoSource(entry.input, entry)) return entry;
        takeIn(iSrc);
        applyRows(Overview::silent);
        paintResultIntoSource();
    } catch (const std::bad_alloc&) {
        return shortOfMemory(entry);
    }
    // A function that found no memory was left out; then this is not the picture asked for.
    if (shortages.sawOne()) return shortOfMemory(entry);

    Draft draft(entry.output);
    OutputFile file;
    const std::string cannotWrite(errorClass(FileError::cannotWrite));
    if (!draft.writeThrough(file)) return failed(entry, cannotWrite, draft.failure());
    const WriteOutcome written =
        writeTo(file, files_, iSrc, picture.extension, picture.formatIndex);
    if (written.error != FileError::none)
        return failed(entry, std::string(errorClass(written.error)), written.message);
    if (!file.finish()) return failed(entry, cannotWrite, file.failure());
    switch (draft.publish(picture.onExists == OnExists::overwrite)) {
        case Draft::End::published:
            entry.status = PictureReport::Status::saved;
            entry.bytes = file.size();
            break;
        case Draft::End::targetKept:
            return outputExists(entry, picture.onExists);
        case Draft::End::failed:
            return failed(entry, "cannot-write", draft.failure());
    }
    return entry;
}

}  // namespace tessarine
