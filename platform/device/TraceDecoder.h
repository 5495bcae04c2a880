#pragma once

#include "TraceLayout.h"

#include <device/TraceFile.h>

namespace device::trace {

// What the two copies of a file, taken one after the other, have in common; any bytes will do. All but `isAlive`.
[[nodiscard]] Trace decode(const File& first, const File& second);

}  // namespace device::trace
