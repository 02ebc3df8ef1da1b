#include "filters/kernels.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "pixels/failures.h"

namespace tessarine::tests {
namespace {

struct Expected {
    std::vector<int32_t> weights;  ///< row after row
    int32_t Weight;
    int32_t factor;  ///< of all three channels
};

const Expected expectedKernels[] = {
    {std::vector<int32_t>(9, 1), 9, 0},
    {std::vector<int32_t>(25, 1), 25, 0},
    {{0, 1, 0, 1, 3, 1, 0, 1, 0}, 7, 0},
    {{1, 3, 1, 3, 9, 3, 1, 3, 1}, 25, 0},
    {{-1, -1, -1, -1, 15, -1, -1, -1, -1}, 7, 0},
    {{0, -1, 0, -1, 5, -1, 0, -1, 0}, 1, 0},
    {{-1, -1, 0, -1, 4, 1, 0, 1, 1}, 4, 0},
    {{-1, -1, 0, -1, 2, 1, 0, 1, 1}, 2, 0},
    {{-1, -1, -1, -1, 8, -1, -1, -1, -1}, 1, 255},
    {{-2, -2, -2, -2, 16, -2, -2, -2, -2}, 1, 255},
    {{0, -1, 0, -1, 4, -1, 0, -1, 0}, 1, 255},
    {{0, -2, 0, -2, 8, -2, 0, -2, 0}, 1, 255},
    {{0, 0, 0, 0, 1, 0, 0, 0, -1}, 1, 128},
    {{0, 0, 0, 0, -1, 0, 0, 0, 1}, 1, 128},
};

TEST(Kernels, TheFourteenHaveTheirWeightsInReadingOrderAndTheirTerms) {
    for (int32_t number = 0; number < 14; ++number) {
        const Expected& expected = expectedKernels[number];
        const tFilterKernel kernel = GetFilterKernel(number);
        const int32_t side = kernel.mskBits.side();
        ASSERT_EQ(side * side, static_cast<int32_t>(expected.weights.size())) << number;
        for (int32_t row = 0; row < side; ++row)
            for (int32_t column = 0; column < side; ++column)
                EXPECT_EQ(kernel.mskBits.at(row, column),
                          expected.weights[static_cast<size_t>(row * side + column)])
                    << "kernel " << number << ", row " << row << ", column " << column;
        EXPECT_EQ(kernel.Weight, expected.Weight) << number;
        EXPECT_EQ(kernel.rFactor, expected.factor) << number;
        EXPECT_EQ(kernel.gFactor, expected.factor) << number;
        EXPECT_EQ(kernel.bFactor, expected.factor) << number;
    }
}

TEST(Kernels, AnyOtherNumberFails) {
    for (const int32_t number :
         {-1, 14, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()})
        EXPECT_THROW(GetFilterKernel(number), StatementFailed) << number;
}

TEST(Kernels, ATextIsSplitAtItsSeparatorsAndEmptyItemsStay) {
    using Items = std::vector<std::string>;
    EXPECT_EQ(splitText("1|-2|30", '|'), (Items{"1", "-2", "30"}));
    EXPECT_EQ(splitText("|a||b|", '|'), (Items{"", "a", "", "b", ""}));
    EXPECT_EQ(splitText("a|b", ';'), (Items{"a|b"}));
    EXPECT_EQ(splitText("", '|'), (Items{""}));
}

}  // namespace
}  // namespace tessarine::tests
