#include "imagefiles/codec/requests.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>
#include <utility>

#include "pixels/failures.h"

namespace tessarine {

namespace {

/// A helper asks for the first bitmap of a picture and for its last; more are steps between them.
constexpr int mostBlocks = 16;
/// Bits of a pixel in any format.
constexpr int16_t mostDepth = 256;
constexpr size_t longestShownText = 500;

/// Pixels that a file may hold whose size is not yet known: more than files of photographs do.
constexpr uint64_t pixelsPerByte = 16;
constexpr uint64_t leastPixels = uint64_t{1} << 22;
constexpr uint64_t mostPixels = uint64_t{1} << 29;

uint64_t pixelsThatMayBeIn(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0 || status.st_size < 0) return leastPixels;
    const uint64_t bytes =
        std::min(static_cast<uint64_t>(status.st_size), mostPixels / pixelsPerByte);
    return std::max(bytes * pixelsPerByte, leastPixels);
}

/// Bytes of the UTF-8 character that a text has at a place; 0 where it has none there.
size_t characterAt(const std::string& text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t first = byte(at);
    const size_t length = first < 0x80   ? 1
                          : first < 0xC2 ? 0
                          : first < 0xE0 ? 2
                          : first < 0xF0 ? 3
                          : first < 0xF5 ? 4
                                         : 0;
    if (length == 0 || at + length > text.size()) return 0;
    for (size_t i = at + 1; i < at + length; ++i)
        if ((byte(i) & 0xC0) != 0x80) return 0;
    if (first == 0xE0 && byte(at + 1) < 0xA0) return 0;
    if (first == 0xED && byte(at + 1) >= 0xA0) return 0;
    if (first == 0xF0 && byte(at + 1) < 0x90) return 0;
    if (first == 0xF4 && byte(at + 1) >= 0x90) return 0;
    return length;
}

bool isControl(const std::string& text, size_t at) {
    const auto first = static_cast<uint8_t>(text[at]);
    return first < 0x20 || first == 0x7F ||
           (first == 0xC2 && static_cast<uint8_t>(text[at + 1]) < 0xA0);
}

std::vector<int> numbersOf(const std::vector<Descriptor>& files) {
    std::vector<int> numbers;
    for (const Descriptor& file : files)
        numbers.push_back(file.get());
    return numbers;
}

void expectNumber(uint32_t number, uint32_t expected) {
    if (number != expected) throw WrongNumber();
}

/// The message of an answer that is an error; a helper need not give a reason.
std::string reasonOf(const std::string& message) {
    std::string reason = printable(message);
    return reason.empty() ? "for no reason that was given" : reason;
}

}  // namespace

std::string printable(const std::string& text) {
    std::string shown;
    for (size_t at = 0; at < text.size();) {
        const size_t length = characterAt(text, at);
        const bool keep = length > 0 && !isControl(text, at);
        if (shown.size() + length > longestShownText) return shown + "...";
        shown += keep ? text.substr(at, length) : "?";
        at += std::max<size_t>(length, 1);
    }
    return shown;
}

std::chrono::duration<double> patienceFor(uint64_t pixels, const LimitWishes& wishes) {
    const double seconds = limitsFor(pixels, wishes).seconds;
    return std::chrono::duration<double>(wishes.seconds ? seconds : 3 * seconds);
}

// ---- Reading ----

ReadingRequest::ReadingRequest(BlockPool& pool, const LimitWishes& wishes,
                               std::vector<Descriptor> files, uint32_t companions,
                               std::string extension, Admit admit,
                               std::optional<MetadataWanted> metadata)
    : pool_(pool),
      wishes_(wishes),
      files_(std::move(files)),
      companions_(companions),
      extension_(std::move(extension)),
      admit_(std::move(admit)),
      wanted_(metadata),
      pixels_(pixelsThatMayBeIn(files_.front().get())) {
    // Untouched pages of it take no memory.
    if (wanted_) attempt([&] { metadata_ = pool_.take(mostMetadataBytes); });
}

ToHelper ReadingRequest::begin(uint32_t number) {
    number_ = number;
    return ReadRequest{number,
                       wishes_.seconds.value_or(0),
                       memoryCeiling(wishes_),
                       companions_,
                       extension_,
                       metadata_ ? metadata_->ref() : BlockRef{},
                       false,
                       wanted_ == MetadataWanted::orientation};
}

std::vector<int> ReadingRequest::descriptors() const {
    std::vector<int> numbers = numbersOf(files_);
    if (metadata_) numbers.push_back(metadata_->descriptor());
    return numbers;
}

std::chrono::duration<double> ReadingRequest::patience() const {
    return patienceFor(pixels_, wishes_);
}

bool ReadingRequest::hear(const ToProgram& message, int socket) {
    if (const auto* wanted = std::get_if<NeedBlock>(&message)) {
        grant(*wanted, socket);
        return false;
    }
    const auto* answer = std::get_if<ReadDone>(&message);
    if (answer == nullptr) throw HelperLied("it answered what nobody had asked");
    finish(*answer);
    return true;
}

void ReadingRequest::grant(const NeedBlock& wanted, int socket) {
    expectNumber(wanted.number, number_);
    if (wanted.width < 1 || wanted.height < 1)
        throw HelperLied("it asked for a picture of no size");
    if (++asked_ > mostBlocks) throw HelperLied("it asked for too many pictures");

    const uint64_t bytes = blockBytesFor(wanted.width, wanted.height);
    const uint64_t pixels =
        static_cast<uint64_t>(wanted.width) * static_cast<uint64_t>(wanted.height);
    BlockGrant answer{number_, {}};
    std::shared_ptr<Block> block;
    // All that is granted for one picture counts: what a helper has written into stays in memory.
    if (bytes == 0 || pixels > mostPixels || bytes > memoryCeiling(wishes_) - grantedBytes_) {
        whyNotGranted_ = std::to_string(wanted.width) + " x " + std::to_string(wanted.height) +
                         " pixels take more memory than a picture may";
    } else if (admit_ && !admit_(pixels)) {
        whyNotGranted_ = "nobody wants it any more";
    } else {
        try {
            block = pool_.take(bytes);
        } catch (const StatementFailed& failure) {
            whyNotGranted_ = failure.what();
        }
    }
    std::vector<int> descriptors;
    if (block != nullptr) {
        pixels_ = std::max(pixels_, pixels);
        grantedBytes_ += bytes;
        answer.block = block->ref();
        descriptors.push_back(block->descriptor());
        granted_[answer.block.id] = std::move(block);
    }
    // Where the helper is gone meanwhile, waiting for its next word tells.
    static_cast<void>(sendPacket(socket, packetOf(ToHelper(answer)), descriptors));
}

void ReadingRequest::finish(const ReadDone& answer) {
    expectNumber(answer.number, number_);
    if (answer.error != FileError::none) {
        if (answer.error == FileError::codecDied || answer.error == FileError::cannotWrite)
            throw HelperLied("it gave an error that is not its own");
        outcome_.error = answer.error;
        outcome_.message = answer.error == FileError::tooLarge && !whyNotGranted_.empty()
                               ? whyNotGranted_
                               : reasonOf(answer.message);
        return;
    }
    const auto found = granted_.find(answer.blockId);
    if (found == granted_.end()) throw HelperLied("it put the picture where it was not to");
    const uint64_t bytes = blockBytesFor(answer.width, answer.height);
    if (bytes == 0 || bytes > found->second->bytes())
        throw HelperLied("it told a size that its picture cannot have");
    if (answer.depth < 0 || answer.depth > mostDepth)
        throw HelperLied("it told a depth that no picture has");
    outcome_.metadata = metadataOf(answer);
    std::shared_ptr<Block> block = std::move(found->second);
    granted_.clear();
    outcome_.depth = answer.depth;
    // A bitmap sees to it that its margin is black, whatever was put there.
    outcome_.bitmap = Bitmap(pictureIn(std::move(block), answer.width, answer.height));
}

FoundMetadata ReadingRequest::metadataOf(const ReadDone& answer) const {
    FoundMetadata found;
    if (wanted_ && !metadata_) found.leftOut = "all of it, for which memory does not suffice";
    const bool mayHoldAny = metadata_ && wanted_ == MetadataWanted::all;
    const uint64_t most =
        mayHoldAny ? std::min<uint64_t>(mostMetadataBytes, metadata_->bytes()) : 0;
    if (answer.metadataBytes > most)
        throw HelperLied("it told of more metadata than there is room");
    if (answer.orientation < 1 || answer.orientation > 8 || (!metadata_ && answer.orientation != 1))
        throw HelperLied("it told how the picture lies as no picture does");
    if (!metadata_) return found;
    // From here on it stays as it is, whatever the helper does to the block. Nobody here looks
    // into it.
    const auto* const bytes = reinterpret_cast<const uint8_t*>(metadata_->pixels());
    found.orientation = answer.orientation;
    found.packed.assign(bytes, bytes + answer.metadataBytes);
    found.leftOut = printable(answer.message);
    return found;
}

// ---- Looking ----

LookingRequest::LookingRequest(const LimitWishes& wishes, std::vector<Descriptor> files,
                               uint32_t companions, std::string extension)
    : wishes_(wishes),
      files_(std::move(files)),
      companions_(companions),
      extension_(std::move(extension)) {}

ToHelper LookingRequest::begin(uint32_t number) {
    number_ = number;
    return ReadRequest{
        number, wishes_.seconds.value_or(0), memoryCeiling(wishes_), companions_, extension_, {},
        true};
}

std::vector<int> LookingRequest::descriptors() const { return numbersOf(files_); }

std::chrono::duration<double> LookingRequest::patience() const {
    // Where the header does not tell, the helper decodes.
    return patienceFor(pixelsThatMayBeIn(files_.front().get()), wishes_);
}

bool LookingRequest::hear(const ToProgram& message, int) {
    const auto* answer = std::get_if<ReadDone>(&message);
    if (answer == nullptr) throw HelperLied("it answered what nobody had asked");
    expectNumber(answer->number, number_);
    if (answer->error != FileError::none) {
        if (answer->error == FileError::codecDied || answer->error == FileError::cannotWrite)
            throw HelperLied("it gave an error that is not its own");
        outcome_.error = answer->error;
        outcome_.message = reasonOf(answer->message);
        return true;
    }
    if (blockBytesFor(answer->width, answer->height) == 0 || answer->blockId != 0)
        throw HelperLied("it told a size that no picture can have");
    outcome_.width = answer->width;
    outcome_.height = answer->height;
    return true;
}

// ---- Writing ----

WritingRequest::WritingRequest(BlockPool& pool, const LimitWishes& wishes,
                               const PixelBuffer& picture, std::string extension,
                               int16_t formatIndex, int output, const MetadataToAdd* metadata)
    : wishes_(wishes),
      width_(picture.width()),
      height_(picture.height()),
      block_(pool.holding(picture)),
      extension_(std::move(extension)),
      formatIndex_(formatIndex),
      output_(output) {
    if (block_ == nullptr) {
        block_ = pool.take(picture.byteCount());
        std::memcpy(block_->pixels(), picture.block(), picture.byteCount());
    }
    if (metadata == nullptr || metadata->packed.empty()) return;
    metadata_ = pool.take(metadata->packed.size());
    std::memcpy(metadata_->pixels(), metadata->packed.data(), metadata->packed.size());
    metadataBytes_ = static_cast<uint32_t>(metadata->packed.size());
    isTurned_ = metadata->isTurned;
    withoutLocation_ = metadata->withoutLocation;
}

std::vector<int> WritingRequest::descriptors() const {
    std::vector<int> numbers{output_, block_->descriptor()};
    if (metadata_) numbers.push_back(metadata_->descriptor());
    return numbers;
}

ToHelper WritingRequest::begin(uint32_t number) {
    number_ = number;
    return WriteRequest{number,
                        wishes_.seconds.value_or(0),
                        memoryCeiling(wishes_),
                        width_,
                        height_,
                        formatIndex_,
                        block_->ref(),
                        extension_,
                        metadata_ ? metadata_->ref() : BlockRef{},
                        metadataBytes_,
                        isTurned_,
                        withoutLocation_};
}

std::chrono::duration<double> WritingRequest::patience() const {
    return patienceFor(static_cast<uint64_t>(width_) * static_cast<uint64_t>(height_), wishes_);
}

bool WritingRequest::hear(const ToProgram& message, int) {
    const auto* answer = std::get_if<WriteDone>(&message);
    if (answer == nullptr) throw HelperLied("it answered what nobody had asked");
    expectNumber(answer->number, number_);
    if (answer->error == FileError::none) {
        struct stat status {};
        if (::fstat(output_, &status) == 0 && status.st_size == 0)
            throw HelperLied("it said that it wrote, and wrote nothing");
        if (metadata_) outcome_.leftOut = printable(answer->message);
        return true;
    }
    if (answer->error == FileError::codecDied || answer->error == FileError::unreadable)
        throw HelperLied("it gave an error that is not its own");
    outcome_.error = answer->error;
    outcome_.message = reasonOf(answer->message);
    return true;
}

}  // namespace tessarine
