#pragma once

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "support/recorder.h"

namespace tessarine::tests {

/// A program with its sample picture taken in and no sheet shown yet.
class Sheet : public ::testing::Test {
  protected:
    Recorder platform;
    cBatch batch{platform};

    /// Selects the node of a function and forgets what was told to the screen until then.
    void select(int32_t id) {
        const FunctionDef* function = findFunction(id);
        ASSERT_NE(function, nullptr);
        batch.SelectNode(function->treeIndex);
        forget();
    }
    void forget() {
        platform.changes.clear();
        platform.giveWays = 0;
    }
    /// How many previews were made since then: each gives way once and paints iDst once.
    int previews() const {
        EXPECT_EQ(platform.timesChanged("iDst"), platform.giveWays);
        return platform.giveWays;
    }
};

}  // namespace tessarine::tests
