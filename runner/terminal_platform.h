#pragma once

#include <functional>
#include <string>

#include "batch/platform.h"

namespace tessarine {

/// The platform of a program without a window: message boxes are lines on standard error, and
/// giving way looks whether the run is to stop.
class TerminalPlatform : public SilentPlatform {
  public:
    std::function<void()> onGiveWay;

    void messageBox(const std::string& text, Icon icon, const std::string& title) override;
    void giveWay() override {
        if (onGiveWay) onGiveWay();
    }
};

}  // namespace tessarine
