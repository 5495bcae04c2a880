#pragma once

#include <cstdint>

namespace bench {

// A command of the bench plugin. The first four bytes of the request are the number of state events that it delivers
// from its own thread; each event's mode entries carry the eight bytes of the time when it set out.
inline constexpr int32_t ICC_BURST_COMMAND = 200;

}  // namespace bench
