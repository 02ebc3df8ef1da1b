#pragma once

#include "wizard/step.h"

namespace tessarine {

class Frame_step3 : public Step {
    Q_OBJECT

  public:
    Frame_step3(const StepContext& context, QWidget* parent);

    void layOut() override;

  private:
    StepContext context_;
};

}  // namespace tessarine
