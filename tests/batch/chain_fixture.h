#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "support/pictures.h"
#include "support/recorder.h"

namespace tessarine::tests {

/// A program without a screen, with short ways to rows and expected pictures.
class ChainFixture : public testing::Test {
  protected:
    /// Appends a row to the pool, with an entry to the chain; what is not given is as in a row
    /// that nothing was set in.
    TrayRow& addRow(int32_t id, std::initializer_list<std::string> columns = {}) {
        TrayRow row;
        row.text = "row";
        row.Tag = id;
        row.columns = {"0", "0", "0", "0", "0", "False", "", "0", "0"};
        int k = 1;
        for (const std::string& text : columns)
            row.column(k++) = text;
        batch.Ltray.push_back(row);
        batch.LSelectedFunctions.push_back({"row", static_cast<int32_t>(batch.Ltray.size())});
        return batch.Ltray.back();
    }

    /// The result of a filter member on a picture, whole picture.
    template <class Call>
    static PixelBuffer filtered(const PixelBuffer& source, Call call) {
        cBitFilter filter;
        const RegionHandle region = wholeRegion(source);
        filter.Bits(source);
        filter.BitsRegion(region);
        return call(filter);
    }
    static PixelBuffer brightened(const PixelBuffer& source, int32_t factor) {
        return filtered(source, [=](cBitFilter& f) { return f.BRIGHTNESS(factor); });
    }
    static PixelBuffer inverted(const PixelBuffer& source) {
        return filtered(source, [](cBitFilter& f) { return f.Invert(); });
    }

    void expectResult(const PixelBuffer& expected) {
        EXPECT_EQ(batch.workBits, expected);
        EXPECT_EQ(batch.cFilter.Bits(), expected);
    }

    Recorder platform;
    cBatch batch{platform};
    const PixelBuffer sample = samplePicture().pixels();
};

}  // namespace tessarine::tests
