#include "wizard/step3.h"

namespace tessarine {

Frame_step3::Frame_step3(const StepContext& context, QWidget* parent)
    : Step(parent), context_(context) {
    setObjectName("Frame_step3");
}

void Frame_step3::layOut() {}

}  // namespace tessarine
