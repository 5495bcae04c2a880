#pragma once

#include "compliance/Checks.h"

#include <chrono>
#include <string>

namespace compliance {

// The checks of a component library. `limit` is how long an answer is waited for.
void checkComponent(Checks& checks, const std::string& file, std::chrono::milliseconds limit);

}  // namespace compliance
