#include "imagefiles/worker/serve.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "imagefiles/decode.h"
#include "imagefiles/decoding.h"
#include "imagefiles/encode.h"
#include "imagefiles/worker/blocks.h"
#include "imagefiles/worker/heap.h"
#include "pixels/pixel_memory.h"

namespace tessarine {

namespace {

/// A file whose header tells no size may have this many pixels for each of its bytes, as far as
/// its limits go.
constexpr uint64_t guessedPixelsPerByte = 8;
/// Bitmaps of fewer pixels are not worth a block while they may be mere steps to the picture.
constexpr int64_t worthABlock = 4096;

/// Pictures of as many pixels take tens of megabytes while they are decoded.
constexpr uint64_t largePixels = uint64_t{1} << 22;

/// Bytes of a file in which its header is looked for before the whole is read.
constexpr size_t headBytes = size_t{1} << 18;

constexpr const char* tooLargeText = "the picture takes more memory than is allowed";

uint64_t sizeOf(const Descriptor& file) {
    struct stat status {};
    if (fstat(file.get(), &status) != 0 || status.st_size < 0) return 0;
    return std::min(static_cast<uint64_t>(status.st_size), maxFileBytes);
}

/// Pixels of a size that is promised. \throws FileRefused where a picture may not have so many
uint64_t pixelsOf(const PromisedSize& promised, uint64_t memoryBytes) {
    const uint64_t side = uint64_t{1} << 30;
    const bool isOdd = promised.width > side || promised.height > side;
    const uint64_t pixels = isOdd ? maxPixels + 1 : promised.width * promised.height;
    if (pixels > maxPixels || pixels * sizeof(Pixel) > memoryBytes)
        throw FileRefused(FileError::tooLarge, tooLargeText);
    return pixels;
}

/// A picture's files, read whole.
struct Contents {
    std::vector<std::vector<uint8_t>> bytes;
    PictureSource source;
};

/// \throws FileRefused where one cannot be read
Contents readContents(const ReadRequest& request, std::vector<Descriptor> files) {
    Contents contents;
    for (Descriptor& file : files) {
        contents.bytes.push_back(readWholeFile(file.get()));
        file.reset();
    }
    PictureSource& source = contents.source;
    source.file = contents.bytes[0];
    source.isTurnedLater = request.metadata.id != 0;
    source.companions.resize(companionPaths("", request.extension).size());
    for (size_t i = 0, next = 1; i < source.companions.size() && i < 32; ++i)
        if ((request.companions >> i & 1) != 0) source.companions[i] = contents.bytes[next++];
    return contents;
}

/// What the beginning of a file promises; nothing where more of it is needed.
std::optional<PromisedSize> promisedAtHead(int file, const std::string& extension) {
    std::vector<uint8_t> head(headBytes);
    const ssize_t got = pread(file, head.data(), head.size(), 0);
    if (got <= 0) return std::nullopt;
    head.resize(static_cast<size_t>(got));
    return promisedSize({head, {}}, extension);
}

/// The memory that a picture is decoded into: asked of the program when the size is known.
class Target {
  public:
    Target(int socket, BlockCache& cache, RequestLimits& limits, const ReadRequest& request)
        : socket_(socket), cache_(cache), limits_(limits), request_(request) {}

    void expect(const std::optional<PromisedSize>& promised, uint64_t pixels) {
        promised_ = promised;
        limitedFor_ = pixels;
    }

    /// Asks for a large picture's block before any of it is decoded: the program has it wait until
    /// there is room for it beside others.
    void prepare() {
        if (!promised_ || promised_->width * promised_->height < largePixels) return;
        static_cast<void>(memoryOfBlock(static_cast<int32_t>(promised_->width),
                                        static_cast<int32_t>(promised_->height)));
    }

    /// Memory for a new buffer; nothing where the heap is to serve.
    /// \throws FileRefused where the program gives none
    std::shared_ptr<Pixel> memoryFor(int32_t width, int32_t height) {
        const uint64_t bytes = blockBytesFor(width, height);
        const bool isPromised = promised_ && std::cmp_equal(promised_->width, width) &&
                                std::cmp_equal(promised_->height, height);
        const bool isSizable = int64_t{width} * height >= worthABlock;
        if (bytes == 0 || !lent_.expired() || !(isPromised || isSizable)) return nullptr;
        return memoryOfBlock(width, height);
    }

    /// Whether a bitmap lies in the block.
    bool holds(const Bitmap& bitmap) const {
        return block_ && bitmap.pixels().block() == block_->pixels();
    }

    /// Copies a bitmap that came to lie elsewhere.
    void take(const Bitmap& bitmap) {
        const std::shared_ptr<Pixel> memory = memoryOfBlock(bitmap.width(), bitmap.height());
        std::memcpy(memory.get(), bitmap.pixels().block(), bitmap.pixels().byteCount());
    }

    uint32_t blockId() const { return block_ ? block_->id() : 0; }
    /// The program gave no block: the picture is too large for it.
    bool isDenied() const { return denied_; }
    /// What the program said made no sense.
    bool isBroken() const { return broken_; }
    bool isClosed() const { return closed_; }

  private:
    std::shared_ptr<Pixel> memoryOfBlock(int32_t width, int32_t height) {
        const uint64_t bytes = blockBytesFor(width, height);
        const uint64_t pixels = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
        if (!block_ || block_->bytes() < bytes) {
            if (pixels > limitedFor_) {
                limits_.set(pixels, request_.seconds, request_.memoryBytes);
                limitedFor_ = pixels;
            }
            ask(width, height, bytes);
        }
        // The mapping outlives the buffers: the cache lets nothing go during a request.
        std::shared_ptr<Pixel> memory(block_->pixels(), [block = block_](Pixel*) {});
        lent_ = memory;
        return memory;
    }

    void ask(int32_t width, int32_t height, uint64_t bytes) {
        block_.reset();
        if (broken_ || closed_) throw FileRefused(FileError::codecDied, "nobody is there");
        limits_.pauseClock();
        Received received;
        received.end = Received::End::closed;
        if (sendPacket(socket_, packetOf(ToProgram(NeedBlock{request_.number, width, height})), {}))
            received = receivePacket(socket_, std::nullopt, true);
        limits_.resumeClock();
        if (received.end == Received::End::closed) {
            closed_ = true;
            throw FileRefused(FileError::codecDied, "nobody is there");
        }
        const std::optional<ToHelper> message =
            received.end == Received::End::packet ? messageToHelper(received.packet) : std::nullopt;
        const BlockGrant* grant = message ? std::get_if<BlockGrant>(&*message) : nullptr;
        if (grant == nullptr || grant->number != request_.number ||
            received.descriptors.size() != (grant->block.id == 0 ? 0u : 1u)) {
            broken_ = true;
            throw FileRefused(FileError::codecDied, "this is no answer");
        }
        if (grant->block.id != 0) {
            BlockCache::Result mapped =
                cache_.map(grant->block, received.descriptors[0].get(), bytes);
            broken_ = mapped.end == BlockCache::End::refused;
            block_ = std::move(mapped.block);
        }
        denied_ = !block_ && !broken_;
        if (!block_) throw FileRefused(FileError::tooLarge, tooLargeText);
    }

    int socket_;
    BlockCache& cache_;
    RequestLimits& limits_;
    const ReadRequest& request_;
    std::optional<PromisedSize> promised_;
    uint64_t limitedFor_ = 0;
    std::shared_ptr<MappedBlock> block_;
    std::weak_ptr<Pixel> lent_;
    bool denied_ = false;
    bool broken_ = false;
    bool closed_ = false;
};

thread_local Target* current = nullptr;

/// New buffers of this thread lie in the target's block while this lives.
class Decoding {
  public:
    explicit Decoding(Target& target) {
        current = &target;
        setBlockSource([](int32_t width, int32_t height) -> std::shared_ptr<Pixel> {
            return current->memoryFor(width, height);
        });
    }
    ~Decoding() {
        setBlockSource(nullptr);
        current = nullptr;
    }
    Decoding(const Decoding&) = delete;
    Decoding& operator=(const Decoding&) = delete;
};

/// The helper's side of one conversation.
class Session {
  public:
    Session(int socket, Service service) : socket_(socket), service_(std::move(service)) {}

    ServiceEnd run() {
        const size_t heapAtStart = heapInUse();
        for (uint32_t served = 0; served < service_.mostRequests; ++served) {
            if (heapInUse() > heapAtStart + service_.mostLostBytes) break;
            const std::optional<ServiceEnd> end = serveOne();
            if (end) return *end;
            cache_.trim();
            trimHeap();
        }
        return ServiceEnd::renewal;
    }

  private:
    std::optional<ServiceEnd> serveOne() {
        Received received = receivePacket(socket_, std::nullopt, true);
        if (received.end == Received::End::closed) return ServiceEnd::closed;
        if (received.end != Received::End::packet) return ServiceEnd::refused;
        const std::optional<ToHelper> message = messageToHelper(received.packet);
        if (!message) return ServiceEnd::refused;
        std::optional<ServiceEnd> end = ServiceEnd::refused;
        if (const auto* request = std::get_if<ReadRequest>(&*message)) {
            makeRoom(request->memoryBytes);
            end = read(*request, std::move(received.descriptors));
        } else if (const auto* writing = std::get_if<WriteRequest>(&*message)) {
            makeRoom(writing->memoryBytes);
            clearLargeBlocks(false);
            end = write(*writing, std::move(received.descriptors));
            clearLargeBlocks(true);
        }
        service_.limits.end();
        return end;
    }

    /// What is kept for speed must not fill what a picture may take.
    void makeRoom(uint64_t ceiling) {
        if (service_.limits.isTight(ceiling)) {
            cache_.clear();
            giveBackPixelMemory();
            emptyHeap();
        }
        service_.limits.begin(ceiling);
    }

    bool answer(const ToProgram& message) { return sendPacket(socket_, packetOf(message), {}); }

    std::optional<ServiceEnd> read(const ReadRequest& request, std::vector<Descriptor> files) {
        const size_t known = companionPaths("", request.extension).size();
        const auto passed = static_cast<size_t>(std::popcount(request.companions));
        if (known < 32 && request.companions >> known != 0) return ServiceEnd::refused;
        const bool wantsMetadata = request.metadata.id != 0;
        if (files.size() != 1 + passed + (wantsMetadata ? 1 : 0)) return ServiceEnd::refused;
        Descriptor metadata;
        if (wantsMetadata) {
            metadata = std::move(files.back());
            files.pop_back();
        }

        Target target(socket_, cache_, service_.limits, request);
        ReadOutcome outcome;
        bool isAnswered = false;
        PromisedSize looked;
        try {
            if (request.sizeOnly)
                looked = look(request, std::move(files), outcome);
            else
                isAnswered = decode(request, std::move(files), target, outcome);
        } catch (const FileRefused& why) {
            outcome = {std::nullopt, 0, why.error(), why.what()};
        } catch (const StatementFailed& why) {
            outcome = {std::nullopt, 0, FileError::unreadable, why.what()};
        } catch (const std::bad_alloc&) {
            outcome = {std::nullopt, 0, FileError::tooLarge, tooLargeText};
        }
        if (target.isClosed()) return ServiceEnd::closed;
        if (target.isBroken()) return ServiceEnd::refused;
        if (isAnswered) return std::nullopt;
        const bool wasRefused = memoryWasRefused();
        if (target.isDenied() || (wasRefused && outcome.error == FileError::unreadable)) {
            outcome.error = FileError::tooLarge;
            outcome.message = tooLargeText;
        }
        ReadDone done{request.number, outcome.error, 0, 0, 0, 0, outcome.message};
        if (outcome.error == FileError::none && request.sizeOnly) {
            done.width = static_cast<int32_t>(looked.width);
            done.height = static_cast<int32_t>(looked.height);
        } else if (outcome.error == FileError::none) {
            done.width = outcome.bitmap->width();
            done.height = outcome.bitmap->height();
            done.depth = outcome.depth;
            done.blockId = target.blockId();
            done.message.clear();
            if (wantsMetadata && !handOver(outcome.metadata, request, metadata, done))
                return ServiceEnd::refused;
        }
        outcome.bitmap.reset();
        if (!answer(done)) return ServiceEnd::closed;
        return std::nullopt;
    }

    /// The size that a picture's header promises; where it tells none, that of the decoded picture.
    PromisedSize look(const ReadRequest& request, std::vector<Descriptor> files,
                      ReadOutcome& outcome) {
        const uint64_t fileBytes = sizeOf(files[0]);
        if (fileBytes == 0) throw FileRefused(FileError::unreadable, "the file is empty");
        memoryWasRefused();
        service_.limits.set(fileBytes * guessedPixelsPerByte, request.seconds, request.memoryBytes);
        const auto isTold = [&](const std::optional<PromisedSize>& promised) {
            return promised && pixelsOf(*promised, request.memoryBytes) > 0;
        };
        std::optional<PromisedSize> promised = promisedAtHead(files[0].get(), request.extension);
        if (isTold(promised)) return *promised;
        const Contents contents = readContents(request, std::move(files));
        promised = promisedSize(contents.source, request.extension);
        if (isTold(promised)) return *promised;
        outcome = decodePicture(contents.source, request.extension);
        if (outcome.error == FileError::none && !outcome.bitmap)
            outcome.error = FileError::unreadable;
        if (outcome.error != FileError::none) return {};
        return {static_cast<uint64_t>(outcome.bitmap->width()),
                static_cast<uint64_t>(outcome.bitmap->height())};
    }

    /// Puts metadata where the program wants it. \return false for a block that is none
    bool handOver(const FoundMetadata& found, const ReadRequest& request,
                  const Descriptor& descriptor, ReadDone& done) {
        done.orientation = found.orientation;
        done.message = found.leftOut;
        if (found.packed.empty()) return true;
        const BlockCache::Result mapped =
            cache_.map(request.metadata, descriptor.get(), found.packed.size());
        if (mapped.end == BlockCache::End::noMemory) {
            done.message = "all of it, for which memory does not suffice";
            return true;
        }
        if (mapped.end == BlockCache::End::refused) return false;
        std::memcpy(mapped.block->pixels(), found.packed.data(), found.packed.size());
        done.metadataBytes = static_cast<uint32_t>(found.packed.size());
        return true;
    }

    /// \return whether the request has been answered already
    bool decode(const ReadRequest& request, std::vector<Descriptor> files, Target& target,
                ReadOutcome& outcome) {
        uint64_t fileBytes = 0;
        for (const Descriptor& file : files)
            fileBytes += sizeOf(file);
        uint64_t pixels = fileBytes * guessedPixelsPerByte;
        memoryWasRefused();
        service_.limits.set(pixels, request.seconds, request.memoryBytes);

        const Contents contents = readContents(request, std::move(files));
        const PictureSource& source = contents.source;
        const std::optional<PromisedSize> promised = promisedSize(source, request.extension);
        if (promised) pixels = pixelsOf(*promised, request.memoryBytes);
        service_.limits.set(pixels, request.seconds, request.memoryBytes);
        target.expect(promised, pixels);
        if (service_.interference != nullptr &&
            service_.interference->atReading(socket_, request, source.file))
            return true;
        target.prepare();

        {
            const Decoding decoding(target);
            outcome = decodePicture(source, request.extension);
        }
        if (outcome.error == FileError::none && !outcome.bitmap)
            outcome.error = FileError::unreadable;
        if (outcome.error == FileError::none && !target.holds(*outcome.bitmap))
            target.take(*outcome.bitmap);
        if (outcome.error == FileError::none && request.metadata.id != 0)
            outcome.metadata = metadataIn(
                source.file, request.extension,
                static_cast<size_t>(std::min<uint64_t>(request.metadata.bytes, mostMetadataBytes)),
                request.orientationOnly ? MetadataWanted::orientation : MetadataWanted::all);
        return false;
    }

    std::optional<ServiceEnd> write(const WriteRequest& request, std::vector<Descriptor> files) {
        const uint64_t bytes = blockBytesFor(request.width, request.height);
        const bool hasMetadata = request.metadata.id != 0;
        if (files.size() != (hasMetadata ? 3u : 2u) || bytes == 0) return ServiceEnd::refused;
        const auto pixels =
            static_cast<uint64_t>(request.width) * static_cast<uint64_t>(request.height);
        memoryWasRefused();
        service_.limits.set(pixels, request.seconds, request.memoryBytes);
        const BlockCache::Result mapped = cache_.map(request.block, files[1].get(), bytes);
        if (mapped.end == BlockCache::End::refused) return ServiceEnd::refused;
        BlockCache::Result metadata;
        if (hasMetadata && mapped.end == BlockCache::End::mapped) {
            metadata = cache_.map(request.metadata, files[2].get(), request.metadataBytes);
            if (metadata.end == BlockCache::End::refused) return ServiceEnd::refused;
        }
        files.resize(1);

        WriteOutcome outcome;
        if (mapped.end == BlockCache::End::noMemory) {
            outcome = {FileError::tooLarge, tooLargeText};
        } else {
            const PixelBuffer picture(
                request.width, request.height,
                std::shared_ptr<Pixel>(mapped.block->pixels(), [](Pixel*) {}));
            if (service_.interference != nullptr &&
                service_.interference->atWriting(socket_, request, picture))
                return std::nullopt;
            Bytes packed;
            if (metadata.block)
                packed = {reinterpret_cast<const uint8_t*>(metadata.block->pixels()),
                          request.metadataBytes};
            outcome = encode(picture, request, packed, std::move(files[0]));
            if (metadata.end == BlockCache::End::noMemory)
                outcome.leftOut = "all of it, for which memory does not suffice";
        }
        const std::string& told =
            outcome.error == FileError::none ? outcome.leftOut : outcome.message;
        if (!answer(WriteDone{request.number, outcome.error, told})) return ServiceEnd::closed;
        return std::nullopt;
    }

    static WriteOutcome encode(const PixelBuffer& picture, const WriteRequest& request,
                               Bytes metadata, Descriptor file) {
        WriteOutcome outcome;
        try {
            const MetadataToAdd toAdd{
                {metadata.begin(), metadata.end()}, request.isTurned, request.withoutLocation};
            OutputFile output;
            if (!output.adopt(file.release(), nameOfOutput))
                return {FileError::cannotWrite, output.failure()};
            outcome = encodePicture(Bitmap::inForm(picture), request.extension, request.formatIndex,
                                    toAdd, output);
            if (outcome.error != FileError::none) {
                output.discard();
            } else if (!output.finish()) {
                outcome = {FileError::cannotWrite, output.failure()};
            }
        } catch (const StatementFailed& why) {
            outcome = {FileError::cannotWrite, why.what()};
        } catch (const std::bad_alloc&) {
            outcome = {FileError::tooLarge, tooLargeText};
        }
        if (memoryWasRefused() && outcome.error == FileError::cannotWrite)
            outcome = {FileError::tooLarge, tooLargeText};
        return outcome;
    }

    int socket_;
    Service service_;
    BlockCache cache_;
};

}  // namespace

ServiceEnd serve(int socket, Service service) { return Session(socket, std::move(service)).run(); }

}  // namespace tessarine
