#pragma once

#include "tools/Output.h"

#include <cstdint>
#include <optional>

namespace subsysctl {

// Says what is wrong with the service, a finding a line, the worst first. Needs no service: the daemon may be stopped,
// hung or gone. Takes some three seconds at most. With a serial it also says why that request is not
// answered. Returns 0 only when nothing is wrong, else 1.
[[nodiscard]] int doctor(std::optional<int32_t> serial, Output& output);

}  // namespace subsysctl
