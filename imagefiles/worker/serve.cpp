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

constexpr const char* tooLargeText = "the picture takes more memory than is allowed";

uint64_t sizeOf(const Descriptor& file) {
    struct stat status {};
    if (fstat(file.get(), &status) != 0 || status.st_size < 0) return 0;
    return std::min(static_cast<uint64_t>(status.st_size), maxFileBytes);
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
        if (files.size() != 1 + passed) return ServiceEnd::refused;

        Target target(socket_, cache_, service_.limits, request);
        ReadOutcome outcome;
        bool isAnswered = false;
        try {
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
        if (outcome.error == FileError::none) {
            done.width = outcome.bitmap->width();
            done.height = outcome.bitmap->height();
            done.depth = outcome.depth;
            done.blockId = target.blockId();
        }
        outcome.bitmap.reset();
        if (!answer(done)) return ServiceEnd::closed;
        return std::nullopt;
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

        std::vector<std::vector<uint8_t>> contents;
        for (Descriptor& file : files) {
            contents.push_back(readWholeFile(file.get()));
            file.reset();
        }
        PictureSource source;
        source.file = contents[0];
        source.companions.resize(companionPaths("", request.extension).size());
        for (size_t i = 0, next = 1; i < source.companions.size() && i < 32; ++i)
            if ((request.companions >> i & 1) != 0) source.companions[i] = contents[next++];

        const std::optional<PromisedSize> promised = promisedSize(source, request.extension);
        if (promised) {
            const uint64_t side = uint64_t{1} << 30;
            const bool isOdd = promised->width > side || promised->height > side;
            pixels = isOdd ? maxPixels + 1 : promised->width * promised->height;
            if (pixels > maxPixels || pixels * sizeof(Pixel) > request.memoryBytes)
                throw FileRefused(FileError::tooLarge, tooLargeText);
        }
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
        return false;
    }

    std::optional<ServiceEnd> write(const WriteRequest& request, std::vector<Descriptor> files) {
        const uint64_t bytes = blockBytesFor(request.width, request.height);
        if (files.size() != 2 || bytes == 0) return ServiceEnd::refused;
        const auto pixels =
            static_cast<uint64_t>(request.width) * static_cast<uint64_t>(request.height);
        memoryWasRefused();
        service_.limits.set(pixels, request.seconds, request.memoryBytes);
        const BlockCache::Result mapped = cache_.map(request.block, files[1].get(), bytes);
        if (mapped.end == BlockCache::End::refused) return ServiceEnd::refused;
        files.pop_back();

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
            outcome = encode(picture, request, std::move(files[0]));
        }
        if (!answer(WriteDone{request.number, outcome.error, outcome.message}))
            return ServiceEnd::closed;
        return std::nullopt;
    }

    WriteOutcome encode(const PixelBuffer& picture, const WriteRequest& request, Descriptor file) {
        WriteOutcome outcome;
        try {
            OutputFile output;
            if (!output.adopt(file.release(), nameOfOutput))
                return {FileError::cannotWrite, output.failure()};
            outcome = encodePicture(Bitmap::inForm(picture), request.extension, request.formatIndex,
                                    output);
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
