#include <fcntl.h>
#include <map>
#include <set>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "expect.h"
#include "imagefiles/encode.h"
#include "imagefiles/worker/serve.h"
#include "input.h"

using namespace tessarine;

// Whatever a program sends, its helper answers by the rules, or ends; it leaves nothing open. The
// files are small pictures or the beginnings of some: what decoders make of bytes is the business
// of other fuzzers.

namespace {

constexpr int wholeSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

Descriptor memoryFile(std::string_view bytes) {
    Descriptor file(memfd_create("fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    expect(static_cast<bool>(file));
    expect(write(file.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    return file;
}

Descriptor blockOf(off_t bytes, int seals) {
    Descriptor file = memoryFile("");
    expect(ftruncate(file.get(), bytes) == 0 && fcntl(file.get(), F_ADD_SEALS, seals) == 0);
    return file;
}

/// One of the blocks that are there for all inputs: some good, some too small or not sealed.
int anyBlock(Input& input) {
    static const std::vector<Descriptor> blocks = [] {
        std::vector<Descriptor> made;
        made.push_back(blockOf(1 << 18, wholeSeals));
        made.push_back(blockOf(1 << 18, wholeSeals));
        made.push_back(blockOf(1 << 14, wholeSeals));
        made.push_back(blockOf(100, wholeSeals));
        made.push_back(blockOf(1 << 18, F_SEAL_GROW));
        made.push_back(blockOf(1 << 18, wholeSeals | F_SEAL_WRITE));
        made.push_back(blockOf(0, wholeSeals));
        made.push_back(Descriptor(open("/dev/zero", O_RDWR | O_CLOEXEC)));
        return made;
    }();
    return blocks[static_cast<size_t>(input.below(static_cast<int32_t>(blocks.size())))].get();
}

BlockRef anyBlockRef(Input& input) {
    static constexpr uint64_t sizes[] = {1 << 18,       1 << 14,           100,         0,
                                         (1 << 18) + 1, uint64_t{1} << 63, ~uint64_t{0}};
    return {static_cast<uint32_t>(input.below(6)),
            sizes[input.below(static_cast<int32_t>(std::size(sizes)))]};
}

std::string anyExtension(Input& input) {
    static constexpr std::string_view words[] = {"ppm", "PGM", "nonsense", "", "bmp", "png", "gif"};
    return std::string(words[input.below(static_cast<int32_t>(std::size(words)))]);
}

/// A pixmap of up to 255 by 255, whole or cut short.
Descriptor anyPicture(Input& input) {
    const int width = input.u8();
    const int height = input.u8();
    std::string bytes = "P6 " + std::to_string(width) + " " + std::to_string(height) + " 255\n";
    if (input.flag()) bytes.resize(bytes.size() + static_cast<size_t>(width * height * 3), 'x');
    return memoryFile(bytes);
}

/// A JPEG file that says how it lies.
Descriptor photograph() {
    static const std::string bytes = [] {
        OutputFile file;
        expect(file.adopt(memfd_create("fuzz", MFD_CLOEXEC), "fuzz"));
        expect(encodePicture(Bitmap(80, 60), "jpg", 6, file).error == FileError::none);
        std::string made(static_cast<size_t>(file.tell()), 0);
        expect(file.seek(0) && file.read(made.data(), made.size()) == made.size());
        constexpr std::string_view exif(
            "\xFF\xE1\x00\x22"
            "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0",
            36);
        return made.insert(2, exif);
    }();
    return memoryFile(bytes);
}

/// What the fuzzer sent, to judge the answers by.
struct Sent {
    std::set<uint32_t> numbers;
    std::set<uint32_t> looks;  ///< the numbers of those that ask for the size alone
    std::set<uint32_t> blocks;
};

void sendOne(Input& input, int socket, Sent& sent) {
    std::vector<Descriptor> own;
    std::vector<int> descriptors;
    ToHelper message;
    switch (input.below(6)) {
        case 0: {
            ReadRequest request{input.u8(), 0, 0, 0, anyExtension(input)};
            request.memoryBytes = uint64_t{1} << input.below(40);
            request.companions = input.below(8) == 0 ? input.u8() : 0;
            request.sizeOnly = request.number >= 128;
            own.push_back(anyPicture(input));
            sent.numbers.insert(request.number);
            if (request.sizeOnly) sent.looks.insert(request.number);
            message = request;
            break;
        }
        case 1: {
            WriteRequest request;
            request.number = input.u8();
            request.memoryBytes = uint64_t{1} << 30;
            request.width = input.below(4) == 0 ? input.i32() : input.below(200);
            request.height = input.below(4) == 0 ? input.i32() : input.below(200);
            request.formatIndex = static_cast<int16_t>(input.below(20) - 1);
            request.block = anyBlockRef(input);
            request.extension = anyExtension(input);
            own.push_back(memoryFile(""));
            descriptors = {own.back().get(), anyBlock(input)};
            sent.numbers.insert(request.number);
            message = request;
            break;
        }
        case 4: {
            ReadRequest request{input.u8(), 0, uint64_t{1} << 30, 0, "jpg"};
            request.metadata = anyBlockRef(input);
            request.orientationOnly = request.number >= 128;
            own.push_back(photograph());
            descriptors = {own.back().get(), anyBlock(input)};
            sent.numbers.insert(request.number);
            message = request;
            break;
        }
        case 5: {
            WriteRequest request;
            request.number = input.u8();
            request.memoryBytes = uint64_t{1} << 30;
            request.width = request.height = 20;
            request.formatIndex = 9;
            request.extension = "png";
            request.block = {1, 1 << 18};
            request.metadata = anyBlockRef(input);
            request.metadataBytes = static_cast<uint32_t>(input.i32());
            request.isTurned = input.flag();
            request.withoutLocation = input.flag();
            own.push_back(memoryFile(""));
            descriptors = {own.back().get(), anyBlock(input), anyBlock(input)};
            sent.numbers.insert(request.number);
            message = request;
            break;
        }
        default: {
            const BlockGrant grant{input.u8(), anyBlockRef(input)};
            if (grant.block.id != 0) descriptors = {anyBlock(input)};
            sent.blocks.insert(grant.block.id);
            message = grant;
        }
    }
    if (descriptors.empty() && !own.empty()) descriptors = {own.back().get()};
    // Now and then a descriptor too many or too few, and bytes that no program would send.
    const int32_t odd = input.below(32);
    if (odd == 0) descriptors.push_back(anyBlock(input));
    if (odd == 1 && !descriptors.empty()) descriptors.pop_back();
    Packet packet = packetOf(message);
    if (odd == 2) packet.resize(input.u8());
    if (odd == 3 && !packet.empty()) packet[input.u8() % packet.size()] ^= input.u8();
    sendPacket(socket, packet, descriptors);
}

void judge(const Received& received, const Sent& sent) {
    expect(received.end == Received::End::packet);
    const std::optional<ToProgram> answer = messageToProgram(received.packet);
    expect(answer.has_value());
    if (const auto* need = std::get_if<NeedBlock>(&*answer)) {
        expect(blockBytesFor(need->width, need->height) != 0);
    } else if (const auto* read = std::get_if<ReadDone>(&*answer)) {
        if (read->error == FileError::none)
            expect((sent.blocks.count(read->blockId) != 0 ||
                    (read->blockId == 0 && sent.looks.count(read->number) != 0)) &&
                   read->width > 0 && read->height > 0);
        expect(read->orientation >= 1 && read->orientation <= 8);
    } else {
        expect(std::holds_alternative<WriteDone>(*answer));
    }
}

/// The number of the next descriptor that is opened.
int nextDescriptor() {
    const int next = dup(STDERR_FILENO);
    close(next);
    return next;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    Input first(nullptr, 0);
    static_cast<void>(anyBlock(first));  // made before descriptors are counted
    photograph();
    const int next = nextDescriptor();
    {
        int ends[2];
        expect(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0);
        const Descriptor program(ends[0]);
        Descriptor helper(ends[1]);
        Sent sent;
        // Few enough for the socket to hold, with their answers.
        for (int count = 1 + input.below(8); count > 0; --count)
            sendOne(input, program.get(), sent);
        shutdown(program.get(), SHUT_WR);

        Service service;
        service.mostLostBytes = size_t{1} << 40;
        const ServiceEnd end = serve(helper.get(), std::move(service));
        expect(end != ServiceEnd::renewal);
        helper.reset();
        for (;;) {
            const Received received = receivePacket(program.get(), std::nullopt, true);
            if (received.end == Received::End::closed) break;
            judge(received, sent);
        }
    }
    expect(nextDescriptor() == next);
    return 0;
}
