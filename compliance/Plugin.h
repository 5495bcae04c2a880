#pragma once

#include "compliance/Checks.h"

#include <string>

namespace compliance {

// The checks of an ICC plugin. Its functions are called, whatever they do to the hardware.
void checkPlugin(Checks& checks, const std::string& file);

}  // namespace compliance
