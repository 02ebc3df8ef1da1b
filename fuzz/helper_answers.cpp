#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include "expect.h"
#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/codec_files.h"
#include "input.h"
#include "pixels/failures.h"

using namespace tessarine;

namespace {

/// A helper that said everything before it was asked and has left. What the input brings are whole
/// packets, or answers with numbers that may be right.
class SaidAll : public Helper {
  public:
    explicit SaidAll(Input& input) {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
            throw StatementFailed("there is no socket");
        ours_ = Descriptor(ends[0]);
        theirs_ = Descriptor(ends[1]);
        if (!input.flag()) say(packetOf(ToProgram(Ready{protocolVersion, "a part"})));
        const int32_t count = input.below(24);
        for (int32_t i = 0; i < count; ++i)
            say(packetFrom(input));
        ::shutdown(theirs_.get(), SHUT_WR);
        end_ = {static_cast<HelperEnd::How>(input.below(3)), input.u8()};
    }

    int socket() const override { return ours_.get(); }
    HelperEnd awaitEnd() override { return end_; }
    void kill() override { theirs_.reset(); }

  private:
    void say(const Packet& packet) const {
        ::send(theirs_.get(), packet.data(), packet.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }
    static Packet packetFrom(Input& input) {
        const auto number = static_cast<uint32_t>(input.below(4));
        switch (input.below(8)) {
            case 0:
                return packetOf(ToProgram(NeedBlock{number, input.i16(), input.i16()}));
            case 1:
                return packetOf(ToProgram(NeedBlock{number, input.i32(), input.i32()}));
            case 2:
                return packetOf(ToProgram(
                    ReadDone{number, static_cast<FileError>(input.below(6)), input.i16(),
                             input.i16(), input.i16(), static_cast<uint32_t>(input.below(8)),
                             textOf(input.take(static_cast<size_t>(input.below(64))))}));
            case 3:
                return packetOf(
                    ToProgram(WriteDone{number, static_cast<FileError>(input.below(6)),
                                        textOf(input.take(static_cast<size_t>(input.below(64))))}));
            case 4:
                return packetOf(ToProgram(
                    Ready{static_cast<uint32_t>(input.below(3)), textOf(input.take(16))}));
            case 6: {
                ReadDone done{
                    number, static_cast<FileError>(input.below(6)), input.i16(), input.i16(),
                    24,     static_cast<uint32_t>(input.below(8)),  "a part"};
                done.orientation = input.u8();
                done.metadataBytes = static_cast<uint32_t>(input.i32());
                return packetOf(ToProgram(done));
            }
            default:
                break;
        }
        const auto raw = input.take(static_cast<size_t>(input.u8()) * 20);
        return {raw.begin(), raw.end()};
    }

    Descriptor ours_;
    Descriptor theirs_;
    HelperEnd end_;
};

/// A file without a name, with a few bytes in it.
struct MemoryFile {
    Descriptor file{::memfd_create("picture", MFD_CLOEXEC)};
    std::string path = "/proc/self/fd/" + std::to_string(file.get());

    MemoryFile() { expect(::write(file.get(), "bytes", 5) == 5); }
};

}  // namespace

// Whatever helpers say, the program's side comes to an end, with a picture of a size within the
// bounds or with an error that has a reason.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const MemoryFile picture;
    Input input(data, size);
    const uint8_t how = input.u8();
    const bool writes = (how & 1) != 0;
    const bool wantsMetadata = (how & 2) != 0;
    const MetadataWanted wanted =
        (how & 4) != 0 ? MetadataWanted::orientation : MetadataWanted::all;
    const std::string extension = input.flag() ? "png" : "wmf";
    constexpr uint64_t memory = uint64_t{1} << 24;

    CodecFiles::Options options;
    options.wishes = {1e6, memory};
    options.start = [&input](HelperKind) { return std::make_unique<SaidAll>(input); };
    options.onNotice = [](const std::string& text) { expect(!text.empty()); };
    options.number = [number = 0U]() mutable { return ++number; };
    CodecFiles files(options);
    const ReadOutcome read = wantsMetadata ? files.readWithMetadata(picture.path, extension, wanted)
                                           : files.read(picture.path, extension);
    const FoundMetadata& metadata = read.metadata;
    expect(metadata.orientation >= 1 && metadata.orientation <= 8);
    expect(metadata.packed.size() <= mostMetadataBytes && metadata.leftOut.size() < 1000);
    expect(wantsMetadata || (metadata.orientation == 1 && metadata.packed.empty()));
    expect(wanted == MetadataWanted::all || metadata.packed.empty());
    if (read.error == FileError::none) {
        expect(read.bitmap && read.bitmap->isValid() && read.depth >= 0);
        expect(read.bitmap->pixels().byteCount() <= memory);
        const Bitmap copy(read.bitmap->pixels());
        expect(copy == *read.bitmap);
    } else {
        expect(!read.bitmap && !read.message.empty() && read.message.size() < 1000);
    }
    if (!writes) return 0;

    OutputFile output;
    expect(output.adopt(::memfd_create("output", MFD_CLOEXEC), "output"));
    const Bitmap bitmap = read.bitmap ? *read.bitmap : Bitmap(3, 3);
    const WriteOutcome written =
        wantsMetadata ? files.writeWithMetadata(bitmap, "png", 9, {{1, 2, 3}, true, true}, output)
                      : files.write(bitmap, "png", 9, output);
    // Nobody writes anything here, so that every word of a success is a lie.
    expect(written.error != FileError::none && !written.message.empty());
    return 0;
}
