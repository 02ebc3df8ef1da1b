#include "batch/texts.h"

#include <bit>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "pixels/failures.h"

namespace tessarine {
namespace {

TEST(Texts, DecimalsBecomeIntegersWithHalvesToEven) {
    EXPECT_EQ(toInteger16("12"), 12);
    EXPECT_EQ(toInteger16("-7"), -7);
    EXPECT_EQ(toInteger16("+7"), 7);
    EXPECT_EQ(toInteger16("  42 "), 42);
    EXPECT_EQ(toInteger16("0.5"), 0);
    EXPECT_EQ(toInteger16("1.5"), 2);
    EXPECT_EQ(toInteger16("2.5"), 2);
    EXPECT_EQ(toInteger16("-2.5"), -2);
    EXPECT_EQ(toInteger16("2.5000001"), 3);
    EXPECT_EQ(toInteger16(".75"), 1);
    EXPECT_EQ(toInteger16("3."), 3);
    EXPECT_EQ(toInteger16("1e2"), 100);
    EXPECT_EQ(toInteger16("1E2"), 100);
    EXPECT_EQ(toInteger32("16777215"), 16777215);
    EXPECT_EQ(toInteger32("-1"), -1);
}

TEST(Texts, IntegersHaveTheirLimits) {
    EXPECT_EQ(toInteger16("32767.49"), 32767);
    EXPECT_THROW(toInteger16("32767.5"), StatementFailed);
    EXPECT_EQ(toInteger16("-32768.5"), -32768);
    EXPECT_THROW(toInteger16("-32768.6"), StatementFailed);
    EXPECT_THROW(toInteger16("1e9"), StatementFailed);
    EXPECT_EQ(toInteger32("2147483647"), 2147483647);
    EXPECT_THROW(toInteger32("2147483648"), StatementFailed);
    EXPECT_EQ(toInteger32("-2147483648"), std::numeric_limits<int32_t>::min());
    EXPECT_THROW(toInteger32("1e999"), StatementFailed);
    EXPECT_EQ(toInteger16(2.5), 2);
    EXPECT_EQ(toInteger16(3.5), 4);
    EXPECT_THROW(toInteger16(32767.5), StatementFailed);
    EXPECT_THROW(toInteger16(std::numeric_limits<double>::quiet_NaN()), StatementFailed);
    EXPECT_THROW(toInteger16(std::numeric_limits<double>::infinity()), StatementFailed);
}

TEST(Texts, WhatIsNoNumberFails) {
    for (const char* text : {"", " ", "abc", "12a", "1 2", "--1", "+-1", "-+1", "+", "-", ".",
                             "0x10", "inf", "-inf", "nan", "infinity", "1e", "1,5", "12\t"}) {
        EXPECT_THROW(toInteger16(text), StatementFailed) << '"' << text << '"';
        EXPECT_THROW(toInteger32(text), StatementFailed) << '"' << text << '"';
        EXPECT_THROW(toSingle(text), StatementFailed) << '"' << text << '"';
        EXPECT_THROW(toTruth(text), StatementFailed) << '"' << text << '"';
    }
    EXPECT_THROW(toInteger16(std::string_view("12\0", 3)), StatementFailed);
    EXPECT_THROW(toInteger16(std::string_view()), StatementFailed);
}

TEST(Texts, NumbersTooSmallToTellFromNothingAreNothing) {
    EXPECT_EQ(toInteger16("1e-999"), 0);
    EXPECT_EQ(toSingle("1e-60"), 0.0F);
    EXPECT_EQ(toSingle("-0." + std::string(60, '0') + "1"), 0.0F);
    EXPECT_THROW(toSingle("1e60"), StatementFailed);
    EXPECT_THROW(toSingle("1" + std::string(60, '0')), StatementFailed);
}

TEST(Texts, SinglesAreReadAsTheNearest) {
    EXPECT_EQ(toSingle("12.5"), 12.5F);
    EXPECT_EQ(toSingle(" -0.1 "), -0.1F);
    EXPECT_EQ(toSingle("3.4028235e38"), std::numeric_limits<float>::max());
}

TEST(Texts, TruthIsAWordInAnyCaseOrANumber) {
    EXPECT_TRUE(toTruth("True"));
    EXPECT_TRUE(toTruth(" tRUE "));
    EXPECT_FALSE(toTruth("False"));
    EXPECT_FALSE(toTruth("FALSE"));
    EXPECT_TRUE(toTruth("-1"));
    EXPECT_TRUE(toTruth("0.1"));
    EXPECT_FALSE(toTruth("0"));
    EXPECT_FALSE(toTruth("0.0"));
    EXPECT_THROW(toTruth("yes"), StatementFailed);
    EXPECT_EQ(truthText(true), "True");
    EXPECT_EQ(truthText(false), "False");
}

TEST(Texts, ASingleIsWrittenAsShortAsItReadsBack) {
    EXPECT_EQ(singleText(96), "96");
    EXPECT_EQ(singleText(12.5F), "12.5");
    EXPECT_EQ(singleText(0.1F), "0.1");
    EXPECT_EQ(singleText(0), "0");
    EXPECT_EQ(singleText(-3), "-3");
    EXPECT_EQ(singleText(100000), "100000");
    EXPECT_EQ(singleText(16777216), "16777216");
    EXPECT_EQ(singleText(0.001F), "0.001");
    EXPECT_EQ(singleText(99.33333F), "99.33333");
    std::mt19937 random(5);
    for (int turn = 0; turn < 20000; ++turn) {
        const auto value = std::bit_cast<float>(static_cast<uint32_t>(random()));
        if (!std::isfinite(value)) continue;
        ASSERT_EQ(toSingle(singleText(value)), value);
        ASSERT_LE(singleText(value).size(), 16U);
    }
}

TEST(Texts, TrimmingTakesBlanksAlone) {
    EXPECT_EQ(trimmed("  a b  "), "a b");
    EXPECT_EQ(trimmed("\ta\t "), "\ta\t");
    EXPECT_EQ(trimmed("   "), "");
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(rightTrimmed("  a  "), "  a");
    EXPECT_EQ(rightTrimmed("   "), "");
    EXPECT_EQ(rightTrimmed(""), "");
}

TEST(Texts, OnlyAsciiLettersBecomeSmall) {
    EXPECT_EQ(lowerCase("AbZ[@1\xC3\x84"), "abz[@1\xC3\x84");
}

TEST(Texts, OnOneLineWhatBreaksOrTurnsALineShowsAsItsBytes) {
    EXPECT_EQ(onOneLine("/a/caf\u00E9 \xE9 \\.jpg"), "/a/caf\u00E9 \xE9 \\.jpg");
    EXPECT_EQ(onOneLine("a\r\n\tb\x7F"), "a\\x0d\\x0a\\x09b\\x7f");
    EXPECT_EQ(onOneLine("\u0085\u009F\u00A0"), "\\xc2\\x85\\xc2\\x9f\u00A0");
    EXPECT_EQ(onOneLine("\u2027\u2028\u2029\u202E\u202F"),
              "\u2027\\xe2\\x80\\xa8\\xe2\\x80\\xa9\\xe2\\x80\\xae\u202F");
    EXPECT_EQ(onOneLine("\xC2"), "\xC2");
    EXPECT_EQ(onOneLine(""), "");
}

TEST(Texts, ThePartsOfAPath) {
    EXPECT_EQ(extensionOf("/a/b.JPG"), "JPG");
    EXPECT_EQ(extensionOf("b.tar.gz"), "gz");
    EXPECT_EQ(extensionOf("/a.b/c"), "");
    EXPECT_EQ(extensionOf("/a/c."), "");
    EXPECT_EQ(extensionOf("/a/.hidden"), "hidden");
    EXPECT_EQ(extensionOf(""), "");
    EXPECT_EQ(fileNameOf("/a/b.jpg"), "b.jpg");
    EXPECT_EQ(fileNameOf("b.jpg"), "b.jpg");
    EXPECT_EQ(fileNameOf("/a/b/"), "b");
    EXPECT_EQ(fileNameOf("/"), "");
    EXPECT_EQ(fileNameOf(""), "");
    EXPECT_EQ(folderOf("/a/b.jpg"), "/a");
    EXPECT_EQ(folderOf("/a/b/c/"), "/a/b");
    EXPECT_EQ(folderOf("/b.jpg"), "/");
    EXPECT_EQ(folderOf("b.jpg"), "");
    EXPECT_EQ(folderOf("a//b.jpg"), "a");
    EXPECT_EQ(folderOf("/"), "");
    EXPECT_EQ(folderOf(""), "");
}

}  // namespace
}  // namespace tessarine
