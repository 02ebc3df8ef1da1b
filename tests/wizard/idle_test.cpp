#include <QTimer>
#include <gtest/gtest.h>

#include "pixels/pixel_memory.h"
#include "support/window_fixture.h"

namespace tessarine::tests {
namespace {

/// Has nothing to give, and counts what it is asked to give back.
class CountedMemory : public PixelMemory {
  public:
    std::shared_ptr<Pixel> take(size_t) override { return nullptr; }
    void giveBack() override { ++givenBack; }
    int givenBack = 0;
};

using Idle = WindowTest;

TEST_F(Idle, MemoryKeptForTheNextPreviewIsGivenBackOnceNothingChangesAnyMore) {
    start();
    CountedMemory memory;
    const HandOverMemory use(memory);
    auto* const timer = window.findChild<QTimer*>("tmrIdle");
    ASSERT_NE(timer, nullptr);
    EXPECT_GE(timer->interval(), 5000) << "previews that follow each other find it";
    timer->setInterval(20);
    batch.platform().changed("iDst");
    EXPECT_EQ(memory.givenBack, 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return memory.givenBack > 0; }, 20000));
    QTest::qWait(100);
    EXPECT_EQ(memory.givenBack, 1);
}

}  // namespace
}  // namespace tessarine::tests
