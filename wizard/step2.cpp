#include "wizard/step2.h"

namespace tessarine {

Frame_step2::Frame_step2(const StepContext& context, QWidget* parent)
    : Step(parent), context_(context) {
    setObjectName("Frame_step2");
}

void Frame_step2::layOut() {}

}  // namespace tessarine
