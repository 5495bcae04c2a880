#pragma once

#include <cstdint>

namespace mindroid {

class SystemClock {
public:
    // Milliseconds since boot, not counting suspend; what message times are measured in. Any thread.
    [[nodiscard]] static uint64_t uptimeMillis();
};

// Takes the clock over for as long as it lives: time stands still, from the present time on, until advance. A second
// one at the same time ends the process. For tests.
class ManualClock {
public:
    ManualClock();
    ~ManualClock();
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;

    // Moves the time; loopers look at it within a millisecond. Any thread.
    void advance(uint64_t millis);
};

}  // namespace mindroid
