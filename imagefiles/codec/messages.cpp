#include "imagefiles/codec/messages.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <type_traits>

#include "imagefiles/decoding.h"

namespace tessarine {

namespace {

enum class Kind : uint8_t { read = 1, write, grant, ready, needBlock, readDone, writeDone };

/// Appends numbers and texts to a packet.
class Writer {
  public:
    explicit Writer(Kind kind) { number(static_cast<uint8_t>(kind)); }

    template <class Number>
    Writer& number(Number value) {
        auto bits = static_cast<uint64_t>(value);
        for (size_t i = 0; i < sizeof(Number); ++i, bits >>= 8)
            packet_.push_back(static_cast<uint8_t>(bits));
        return *this;
    }
    Writer& real(double value) { return number(std::bit_cast<uint64_t>(value)); }
    Writer& flag(bool value) { return number(static_cast<uint8_t>(value)); }
    Writer& flags(bool first, bool second) {
        return number(static_cast<uint8_t>((first ? 1 : 0) | (second ? 2 : 0)));
    }
    Writer& block(const BlockRef& block) { return number(block.id).number(block.bytes); }
    /// A text is always a packet's last field and ends with it.
    Packet text(const std::string& text) {
        const size_t length = std::min(text.size(), longestText);
        packet_.insert(packet_.end(), text.begin(), text.begin() + static_cast<ptrdiff_t>(length));
        return std::move(packet_);
    }
    Packet end() { return std::move(packet_); }

  private:
    Packet packet_;
};

/// Takes a packet apart. It throws what ByteReader throws where the packet ends early.
class Reader {
  public:
    explicit Reader(Bytes packet) : bytes_(packet) {}

    template <class Number>
    void number(Number& value) {
        const Bytes raw = bytes_.take(sizeof(Number));
        uint64_t bits = 0;
        for (size_t i = sizeof(Number); i-- > 0;)
            bits = bits << 8 | raw[i];
        value = static_cast<Number>(bits);
    }
    void seconds(double& value) {
        uint64_t bits = 0;
        number(bits);
        value = std::bit_cast<double>(bits);
        if (!std::isfinite(value) || value < 0) refuse("this is no time");
    }
    void error(FileError& value) {
        uint8_t raw = 0;
        number(raw);
        if (raw > static_cast<uint8_t>(FileError::cannotWrite)) refuse("there is no such error");
        value = static_cast<FileError>(raw);
    }
    void flags(bool& first, bool& second) {
        uint8_t raw = 0;
        number(raw);
        if (raw > 3) refuse("there is no such flag");
        first = (raw & 1) != 0;
        second = (raw & 2) != 0;
    }
    void block(BlockRef& value) {
        number(value.id);
        number(value.bytes);
    }
    void flag(bool& value) {
        uint8_t raw = 0;
        number(raw);
        if (raw > 1) refuse("this is neither yes nor no");
        value = raw != 0;
    }
    void text(std::string& value) {
        const Bytes rest = bytes_.rest();
        if (rest.size() > longestText) refuse("the text is too long");
        value.assign(rest.begin(), rest.end());
    }
    void end() const {
        if (bytes_.remaining() != 0) refuse("the packet is too long");
    }

  private:
    ByteReader bytes_;
};

template <class Result, class Take>
std::optional<Result> taken(Bytes packet, Take take) {
    if (packet.size() > longestPacket) return std::nullopt;
    std::optional<Result> result;
    attempt([&] {
        Reader reader(packet);
        uint8_t kind = 0;
        reader.number(kind);
        result = take(static_cast<Kind>(kind), reader);
    });
    return result;
}

}  // namespace

Packet packetOf(const ToHelper& message) {
    if (const auto* m = std::get_if<ReadRequest>(&message))
        return Writer(Kind::read)
            .number(m->number)
            .real(m->seconds)
            .number(m->memoryBytes)
            .number(m->companions)
            .block(m->metadata)
            .flags(m->sizeOnly, m->orientationOnly)
            .text(m->extension);
    if (const auto* m = std::get_if<WriteRequest>(&message))
        return Writer(Kind::write)
            .number(m->number)
            .real(m->seconds)
            .number(m->memoryBytes)
            .number(m->width)
            .number(m->height)
            .number(m->formatIndex)
            .block(m->block)
            .block(m->metadata)
            .number(m->metadataBytes)
            .flag(m->isTurned)
            .flag(m->withoutLocation)
            .text(m->extension);
    const auto& m = std::get<BlockGrant>(message);
    return Writer(Kind::grant).number(m.number).block(m.block).end();
}

Packet packetOf(const ToProgram& message) {
    if (const auto* m = std::get_if<Ready>(&message))
        return Writer(Kind::ready).number(m->version).text(m->refused);
    if (const auto* m = std::get_if<NeedBlock>(&message))
        return Writer(Kind::needBlock).number(m->number).number(m->width).number(m->height).end();
    if (const auto* m = std::get_if<ReadDone>(&message))
        return Writer(Kind::readDone)
            .number(m->number)
            .number(static_cast<uint8_t>(m->error))
            .number(m->width)
            .number(m->height)
            .number(m->depth)
            .number(m->blockId)
            .number(m->orientation)
            .number(m->metadataBytes)
            .text(m->message);
    const auto& m = std::get<WriteDone>(message);
    return Writer(Kind::writeDone)
        .number(m.number)
        .number(static_cast<uint8_t>(m.error))
        .text(m.message);
}

std::optional<ToHelper> messageToHelper(Bytes packet) {
    return taken<ToHelper>(packet, [](Kind kind, Reader& reader) -> std::optional<ToHelper> {
        if (kind == Kind::read) {
            ReadRequest m;
            reader.number(m.number);
            reader.seconds(m.seconds);
            reader.number(m.memoryBytes);
            reader.number(m.companions);
            reader.block(m.metadata);
            reader.flags(m.sizeOnly, m.orientationOnly);
            reader.text(m.extension);
            return m;
        }
        if (kind == Kind::write) {
            WriteRequest m;
            reader.number(m.number);
            reader.seconds(m.seconds);
            reader.number(m.memoryBytes);
            reader.number(m.width);
            reader.number(m.height);
            reader.number(m.formatIndex);
            reader.block(m.block);
            reader.block(m.metadata);
            reader.number(m.metadataBytes);
            reader.flag(m.isTurned);
            reader.flag(m.withoutLocation);
            reader.text(m.extension);
            return m;
        }
        if (kind == Kind::grant) {
            BlockGrant m;
            reader.number(m.number);
            reader.block(m.block);
            reader.end();
            return m;
        }
        return std::nullopt;
    });
}

std::optional<ToProgram> messageToProgram(Bytes packet) {
    return taken<ToProgram>(packet, [](Kind kind, Reader& reader) -> std::optional<ToProgram> {
        if (kind == Kind::ready) {
            Ready m;
            reader.number(m.version);
            reader.text(m.refused);
            return m;
        }
        if (kind == Kind::needBlock) {
            NeedBlock m;
            reader.number(m.number);
            reader.number(m.width);
            reader.number(m.height);
            reader.end();
            return m;
        }
        if (kind == Kind::readDone) {
            ReadDone m;
            reader.number(m.number);
            reader.error(m.error);
            reader.number(m.width);
            reader.number(m.height);
            reader.number(m.depth);
            reader.number(m.blockId);
            reader.number(m.orientation);
            reader.number(m.metadataBytes);
            reader.text(m.message);
            return m;
        }
        if (kind == Kind::writeDone) {
            WriteDone m;
            reader.number(m.number);
            reader.error(m.error);
            reader.text(m.message);
            return m;
        }
        return std::nullopt;
    });
}

uint64_t blockBytesFor(int64_t width, int64_t height) {
    constexpr int64_t longestSide = int64_t{1} << 30;
    if (width < 1 || height < 1 || width > longestSide || height > longestSide) return 0;
    const auto columns = static_cast<uint64_t>(width) + 2 * PixelBuffer::margin;
    const auto rows = static_cast<uint64_t>(height) + 2 * PixelBuffer::margin;
    const uint64_t bytes = columns * rows * sizeof(Pixel);
    return bytes > uint64_t{1} << 40 ? 0 : bytes;
}

}  // namespace tessarine
