#pragma once

#include <cstdint>

namespace mindroid::clock {

// When somebody who waits for this uptime has to look at the clock, in milliseconds of CLOCK_MONOTONIC. A manual clock
// tells nobody that it moved: then that is soon. Thread: any.
[[nodiscard]] uint64_t timeToLook(uint64_t uptimeMillis);

}  // namespace mindroid::clock
