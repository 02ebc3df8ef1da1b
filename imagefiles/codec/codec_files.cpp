#include "imagefiles/codec/codec_files.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <random>
#include <utility>

#include "imagefiles/codec/helper_link.h"
#include "imagefiles/codec/helper_process.h"
#include "imagefiles/codec/requests.h"
#include "imagefiles/picture_source.h"
#include "pixels/failures.h"
#include "pixels/machine.h"

namespace tessarine {

namespace {

/// A helper that ends before it takes a request has a successor, and that one may have one.
constexpr int mostSuccessors = 3;

std::string lowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

HelperKind kindFor(const std::string& extension) {
    const std::string lower = lowerCase(extension);
    return lower == "wmf" || lower == "emf" ? HelperKind::drawing : HelperKind::files;
}

/// A picture file and its companions, open.
struct OpenedPicture {
    std::vector<Descriptor> files;
    uint32_t companions = 0;  ///< bit i for companion i
};

OpenedPicture openPicture(const std::string& path, const std::string& extension) {
    OpenedPicture opened;
    opened.files.emplace_back(openPictureFile(path));
    const std::vector<std::string> beside = companionPaths(path, extension);
    for (size_t i = 0; i < std::min(beside.size(), mostDescriptors - 1); ++i)
        attempt([&] {
            opened.files.emplace_back(openPictureFile(beside[i]));
            opened.companions |= uint32_t{1} << i;
        });
    return opened;
}

/// What the files were when they were opened. \param companions  how many there may be
FileMarks marksOf(const OpenedPicture& opened, size_t companions) {
    FileMarks marks{markOf(opened.files[0].get())};
    for (size_t i = 0, next = 1; i < companions; ++i) {
        marks.emplace_back();
        if (i < 32 && (opened.companions >> i & 1) != 0)
            marks.back() = markOf(opened.files[next++].get());
    }
    return marks;
}

}  // namespace

/// One picture of several in flight.
class CodecFiles::OnePicture : public PictureFiles {
  public:
    explicit OnePicture(CodecFiles& files) : files_(files), place_(files.admission_) {}

    ReadOutcome read(const std::string& path, const std::string& extension) override {
        return read(path, extension, std::nullopt);
    }
    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file) override {
        return files_.write(picture, extension, formatIndex, file, {});
    }
    ReadOutcome readWithMetadata(const std::string& path, const std::string& extension,
                                 MetadataWanted wanted) override {
        return read(path, extension, wanted);
    }
    WriteOutcome writeWithMetadata(const Bitmap& picture, const std::string& extension,
                                   int16_t formatIndex, const MetadataToAdd& metadata,
                                   OutputFile& file) override {
        return files_.write(picture, extension, formatIndex, file, {}, &metadata);
    }

  private:
    ReadOutcome read(const std::string& path, const std::string& extension,
                     std::optional<MetadataWanted> metadata) {
        const auto admit = [&](uint64_t pixels) {
            return place_.admit(Admission::bytesFor(pixels));
        };
        return files_.read({path, extension}, admit, {}, nullptr, metadata);
    }

    CodecFiles& files_;
    Admission::Place place_;
};

CodecFiles::CodecFiles(Options options)
    : options_(std::move(options)),
      admission_(options_.budget.value_or(std::numeric_limits<uint64_t>::max())),
      starter_(options_.start
                   ? options_.start
                   : [program = options_.program](HelperKind kind) -> std::unique_ptr<Helper> {
          return std::make_unique<HelperProcess>(program, kind);
      }),
      mostIdle_(options_.mostIdle),
      ahead_(admission_, options_.settled,
             [this](const ExpectedFile& file, Admission::Place& place,
                    const std::function<bool()>& isOff,
                    FileMarks& marks) { return readAhead(file, place, isOff, marks); }) {
    if (!options_.number) options_.number = [] { return std::random_device()(); };
    if (options_.startsEarly) coming_.push_back(starter_.start(HelperKind::files));
}

CodecFiles::~CodecFiles() = default;

std::shared_ptr<Pixel> CodecFiles::SharedMemory::take(size_t pixels) {
    std::shared_ptr<Pixel> memory;
    // The heap serves where the system gives no more of this kind.
    attempt([&] { memory = pixelsIn(pool_.take(uint64_t{pixels} * sizeof(Pixel))); });
    return memory;
}

void CodecFiles::prepareFor(size_t pictures) {
    admission_.setBudget(options_.budget ? *options_.budget : availableMemory() / 2);
    constexpr auto files = static_cast<size_t>(HelperKind::files);
    std::vector<std::unique_ptr<HelperLink>> tooMany;
    const std::lock_guard lock(guard_);
    mostIdle_ = std::max<size_t>(pictures, 1);
    for (auto& idle : idle_)
        while (idle.size() > mostIdle_) {
            tooMany.push_back(std::move(idle.back()));
            idle.pop_back();
        }
    while (!coming_.empty() && idle_[files].size() + coming_.size() > mostIdle_)
        coming_.pop_back();
    while (idle_[files].size() + coming_.size() < mostIdle_)
        coming_.push_back(starter_.start(HelperKind::files));
}

std::unique_ptr<PictureFiles> CodecFiles::onePicture() {
    return std::make_unique<OnePicture>(*this);
}

std::unique_ptr<HelperLink> CodecFiles::takeKept(HelperKind kind) {
    HelperStarter::Coming coming;
    {
        const std::lock_guard lock(guard_);
        std::vector<std::unique_ptr<HelperLink>>& idle = idle_[static_cast<size_t>(kind)];
        if (!idle.empty()) {
            std::unique_ptr<HelperLink> link = std::move(idle.back());
            idle.pop_back();
            return link;
        }
        if (kind != HelperKind::files || coming_.empty()) return nullptr;
        coming = std::move(coming_.front());
        coming_.erase(coming_.begin());
    }
    std::unique_ptr<HelperLink> link;
    attempt([&] { link = std::make_unique<HelperLink>(coming.get()); });
    return link;
}

std::unique_ptr<HelperLink> CodecFiles::acquire(HelperKind kind, const Waiting& waiting) {
    std::unique_ptr<HelperLink> link = takeKept(kind);
    // One that made room for a fresh one meanwhile, or talks unasked, is let go.
    while (link != nullptr && link->isReady() && !link->isQuiet())
        link = takeKept(kind);
    if (link == nullptr) link = std::make_unique<HelperLink>(starter_.start(kind).get());
    if (!link->isReady()) notice(link->awaitReady(waiting));
    return link;
}

void CodecFiles::release(HelperKind kind, std::unique_ptr<HelperLink> link) {
    const std::lock_guard lock(guard_);
    std::vector<std::unique_ptr<HelperLink>>& idle = idle_[static_cast<size_t>(kind)];
    if (idle.size() < mostIdle_) idle.push_back(std::move(link));
}

void CodecFiles::notice(const std::string& refused) {
    if (refused.empty() || !options_.onNotice) return;
    {
        const std::lock_guard lock(guard_);
        if (std::find(noticed_.begin(), noticed_.end(), refused) != noticed_.end()) return;
        noticed_.push_back(refused);
    }
    options_.onNotice("the kernel refuses a part of the protection from bad picture files: " +
                      refused);
}

CodecFiles::Failure CodecFiles::ask(HelperKind kind, HelperRequest& request,
                                    const Waiting& waiting) {
    for (int successors = 0;; ++successors) {
        std::unique_ptr<HelperLink> link;
        try {
            link = acquire(kind, waiting);
        } catch (const StatementFailed& failure) {
            return {FileError::codecDied, failure.what()};
        }
        const HelperLink::Outcome outcome = link->ask(request, options_.number(), waiting);
        switch (outcome.end) {
            case HelperLink::End::answered:
                release(kind, std::move(link));
                return {};
            case HelperLink::End::notTaken:
                if (successors < mostSuccessors) continue;
                return {FileError::codecDied, outcome.message};
            case HelperLink::End::timedOut:
                return {FileError::timedOut, outcome.message};
            case HelperLink::End::died:
            case HelperLink::End::off:
                return {FileError::codecDied, outcome.message};
        }
    }
}

void CodecFiles::expect(const std::vector<ExpectedFile>& files) { ahead_.expect(files); }

ReadOutcome CodecFiles::readAhead(const ExpectedFile& file, Admission::Place& place,
                                  const std::function<bool()>& isOff, FileMarks& marks) {
    const auto admit = [&](uint64_t pixels) {
        return place.admit(Admission::bytesFor(pixels), isOff);
    };
    return read(file, admit, {{}, isOff}, &marks);
}

ReadOutcome CodecFiles::read(const std::string& path, const std::string& extension) {
    std::optional<ReadOutcome> ahead = ahead_.take(path, extension, options_.onWaiting);
    if (ahead) return std::move(*ahead);
    // The picture whose turn it is does not wait; those that are read ahead give way to it.
    const auto admit = [&](uint64_t pixels) {
        if (Admission::Place* const place = ahead_.placeOfTurn())
            place->admitAtOnce(Admission::bytesFor(pixels));
        return true;
    };
    return read({path, extension}, admit, {options_.onWaiting, {}});
}

ReadOutcome CodecFiles::readWithMetadata(const std::string& path, const std::string& extension,
                                         MetadataWanted wanted) {
    return read({path, extension}, {}, {options_.onWaiting, {}}, nullptr, wanted);
}

ReadOutcome CodecFiles::read(const ExpectedFile& file,
                             const std::function<bool(uint64_t pixels)>& admit,
                             const Waiting& waiting, FileMarks* marks,
                             std::optional<MetadataWanted> metadata) {
    const auto& [path, extension] = file;
    ReadOutcome outcome;
    try {
        OpenedPicture opened = openPicture(path, extension);
        if (marks != nullptr) *marks = marksOf(opened, companionPaths(path, extension).size());
        ReadingRequest request(pool_, options_.wishes, std::move(opened.files), opened.companions,
                               extension, admit, metadata);
        Failure failure = ask(kindFor(extension), request, waiting);
        if (failure.error == FileError::none) return request.takeOutcome();
        outcome.error = failure.error;
        outcome.message = std::move(failure.message);
    } catch (const FileRefused& refusal) {
        outcome.error = refusal.error();
        outcome.message = refusal.what();
    } catch (const std::exception& failure) {
        outcome.error = FileError::tooLarge;
        outcome.message = failure.what();
    }
    return outcome;
}

LookOutcome CodecFiles::lookAt(const std::string& path, const std::string& extension) {
    try {
        OpenedPicture opened = openPicture(path, extension);
        LookingRequest request(options_.wishes, std::move(opened.files), opened.companions,
                               extension);
        const Waiting waiting{options_.onWaiting, {}};
        Failure failure = ask(kindFor(extension), request, waiting);
        if (failure.error == FileError::none) return request.takeOutcome();
        return {0, 0, failure.error, std::move(failure.message)};
    } catch (const FileRefused& refusal) {
        return {0, 0, refusal.error(), refusal.what()};
    } catch (const std::exception& failure) {
        return {0, 0, FileError::tooLarge, failure.what()};
    }
}

WriteOutcome CodecFiles::write(const Bitmap& picture, const std::string& extension,
                               int16_t formatIndex, OutputFile& file) {
    return write(picture, extension, formatIndex, file, {options_.onWaiting, {}});
}

WriteOutcome CodecFiles::writeWithMetadata(const Bitmap& picture, const std::string& extension,
                                           int16_t formatIndex, const MetadataToAdd& metadata,
                                           OutputFile& file) {
    return write(picture, extension, formatIndex, file, {options_.onWaiting, {}}, &metadata);
}

WriteOutcome CodecFiles::write(const Bitmap& picture, const std::string& extension,
                               int16_t formatIndex, OutputFile& file, const Waiting& waiting,
                               const MetadataToAdd* metadata) {
    if (!picture.isValid() || !file.isOpen())
        return {FileError::cannotWrite,
                file.failure().empty() ? "there is no picture to write" : file.failure()};
    try {
        WritingRequest request(pool_, options_.wishes, picture.pixels(), extension, formatIndex,
                               file.descriptor(), metadata);
        Failure failure = ask(HelperKind::files, request, waiting);
        if (failure.error != FileError::none) return {failure.error, std::move(failure.message)};
        WriteOutcome outcome = request.takeOutcome();
        const size_t name = outcome.message.find(nameOfOutput);
        if (name != std::string::npos)
            outcome.message.replace(name, std::strlen(nameOfOutput), file.name());
        return outcome;
    } catch (const std::exception& failure) {
        return {FileError::tooLarge, failure.what()};
    }
}

}  // namespace tessarine
