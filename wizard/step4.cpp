#include "wizard/step4.h"

namespace tessarine {

Frame_step4::Frame_step4(const StepContext& context, QWidget* parent)
    : Step(parent), context_(context) {
    setObjectName("Frame_step4");
}

void Frame_step4::layOut() {}

}  // namespace tessarine
