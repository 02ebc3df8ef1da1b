#include "wizard/file_types.h"

#include <gtest/gtest.h>

namespace tessarine::tests {
namespace {

TEST(FileTypes, TheSystemNamesWhatItKnows) {
    EXPECT_FALSE(fileTypeName("jpg").empty());
    EXPECT_NE(fileTypeName("jpg"), "JPG File");
    EXPECT_EQ(fileTypeName("jpg"), fileTypeName("jpeg"));
    EXPECT_NE(fileTypeName("jpg"), fileTypeName("png"));
}

TEST(FileTypes, ATypeThatTheSystemDoesNotKnowIsNamedByItsExtension) {
    EXPECT_EQ(fileTypeName("qqxyz"), "QQXYZ File");
}

TEST(FileTypes, EveryTypeHasAnIcon) {
    for (const char* extension : {"jpg", "png", "psd", "pcx", "qqxyz", ""})
        EXPECT_FALSE(fileTypeIcon(extension).pixmap(16, 16).isNull()) << extension;
}

}  // namespace
}  // namespace tessarine::tests
