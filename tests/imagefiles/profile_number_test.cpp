#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "imagefiles/decoders.h"
#include "imagefiles/memory_file.h"

namespace tessarine {
namespace {

/// Numbers of the bytes that a kind of TIFF takes for them.
struct Kind {
    bool isLittle;
    bool isLarge;

    std::string number(uint64_t value, size_t bytes) const {
        std::string text;
        for (size_t i = 0; i < bytes; ++i)
            text += static_cast<char>(value >> 8 * (isLittle ? i : bytes - 1 - i));
        return text;
    }
    /// A TIFF whose first directory has these numbers of entries, behind some other bytes.
    std::string file(const std::vector<uint64_t>& entries) const {
        std::string text = isLittle ? "II" : "MM";
        text += number(isLarge ? 43 : 42, 2);
        if (isLarge) text += number(8, 2) + number(0, 2);
        const size_t directory = 40;
        text += number(directory, isLarge ? 8 : 4);
        text.resize(directory, 'x');
        text += number(entries.size(), isLarge ? 8 : 2);
        for (const uint64_t entry : entries)
            text += number(entry, 2) + std::string(isLarge ? 18 : 10, '\0');
        return text;
    }
};

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

TEST(ProfileNumber, IsFoundInAllKindsOfTiff) {
    for (const Kind kind :
         {Kind{true, false}, Kind{false, false}, Kind{true, true}, Kind{false, true}}) {
        const std::string file = kind.file({256, 257, 34665, 34675});
        const auto place = placeOfProfileNumber(bytesOf(file));
        ASSERT_TRUE(place);
        const size_t entry = 40 + (kind.isLarge ? 8 + 3 * 20 : 2 + 3 * 12);
        EXPECT_EQ(*place, entry + (kind.isLittle ? 0 : 1));
        EXPECT_EQ(file[*place], 0x73);
        EXPECT_FALSE(placeOfProfileNumber(bytesOf(kind.file({256, 257, 34665}))));
    }
}

TEST(ProfileNumber, IsNotLookedForBeyondTheFile) {
    const Kind kind{true, false};
    const std::string file = kind.file({256, 34675});
    for (size_t size = 0; size < file.size() - 11; ++size)
        EXPECT_FALSE(placeOfProfileNumber(bytesOf(file.substr(0, size)))) << size;
    std::string far = file;
    far.replace(4, 4, kind.number(0xFFFFFFF0, 4));
    EXPECT_FALSE(placeOfProfileNumber(bytesOf(far)));
}

TEST(AMemoryReader, PretendsAByteAndLeavesItAsItIs) {
    const std::string text = "abcdef";
    MemoryReader reader(bytesOf(text));
    reader.pretend(3, 'X');
    std::array<char, 6> read{};
    EXPECT_EQ(reader.read(read.data(), 1, 6), 6U);
    EXPECT_EQ(std::string(read.data(), 6), "abcXef");
    reader.seek(3);
    EXPECT_EQ(reader.read(read.data(), 1, 1), 1U);
    EXPECT_EQ(read[0], 'X');
    reader.seek(4);
    EXPECT_EQ(reader.read(read.data(), 1, 2), 2U);
    EXPECT_EQ(std::string(read.data(), 2), "ef");
    EXPECT_EQ(text, "abcdef");
}

}  // namespace
}  // namespace tessarine
