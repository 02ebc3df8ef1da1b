#include "wizard/step1.h"

namespace tessarine {

Frame_step1::Frame_step1(const StepContext& context, QWidget* parent)
    : Step(parent), context_(context) {
    setObjectName("Frame_step1");
}

void Frame_step1::layOut() {}

}  // namespace tessarine
