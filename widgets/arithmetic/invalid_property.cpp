#include "widgets/arithmetic/invalid_property.h"

namespace tessarine {

InvalidPropertyValue::InvalidPropertyValue() : std::invalid_argument("invalid property value") {}

}  // namespace tessarine
