#pragma once

#include <cstddef>

namespace mindroid::messagepool {

// Memory for one message. Each thread keeps a few blocks; full magazines of them travel between threads, so that
// messages obtained on one thread and spent on another cost no heap operation once the traffic is steady. Bounded: what
// exceeds the pool goes back to the heap. Any thread.
[[nodiscard]] void* allocate(size_t size);
void release(void* memory);

}  // namespace mindroid::messagepool
