#pragma once

#include <cstdint>

namespace mindroid {

class SystemClock {
public:
    // Milliseconds since boot, not counting suspend; what message times are measured in. Thread: any.
    [[nodiscard]] static uint64_t uptimeMillis();
};

}  // namespace mindroid
