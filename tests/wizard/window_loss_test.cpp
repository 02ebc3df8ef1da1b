#include "wizard/window_loss.h"

#include <xcb/xproto.h>

#include <QWidget>
#include <gtest/gtest.h>

#include "support/window_driver.h"

namespace tessarine::tests {
namespace {

class WindowLossTest : public testing::Test {
  protected:
    WindowLossTest() {
        window.show();
        settle();
    }
    /// What the X server says when a window has gone.
    void tellEnd(WId of, uint8_t kind = XCB_DESTROY_NOTIFY) {
        xcb_destroy_notify_event_t event{};
        event.response_type = kind;
        event.window = static_cast<xcb_window_t>(of);
        EXPECT_FALSE(loss.nativeEventFilter("xcb_generic_event_t", &event, nullptr));
    }

    QWidget window;
    int losses = 0;
    WindowLoss loss{window, [this] { ++losses; }};
};

TEST_F(WindowLossTest, TheEndOfTheWindowIsToldFromTheEventLoop) {
    tellEnd(window.internalWinId());
    EXPECT_EQ(losses, 0);
    settle();
    EXPECT_EQ(losses, 1);
}

TEST_F(WindowLossTest, SomebodyElseMayHaveSentIt) {
    tellEnd(window.internalWinId(), XCB_DESTROY_NOTIFY | 0x80);
    settle();
    EXPECT_EQ(losses, 1);
}

TEST_F(WindowLossTest, TheEndOfAnotherWindowAndOtherEventsAreNoLoss) {
    tellEnd(window.internalWinId() + 1);
    tellEnd(window.internalWinId(), XCB_UNMAP_NOTIFY);
    settle();
    EXPECT_EQ(losses, 0);
}

}  // namespace
}  // namespace tessarine::tests
