#pragma once

#include <cstdint>

namespace mindroid {

// Takes the clock of the process over for as long as it lives: time stands still, from the present time on, until
// advance. A second one at the same time ends the process.
class ManualClock final {
public:
    ManualClock();
    ~ManualClock();
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;

    // Moves the time; loopers look at it within a millisecond. Thread: any.
    void advance(uint64_t millis);
};

}  // namespace mindroid
