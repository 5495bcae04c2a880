#pragma once

#include <sys/types.h>

namespace binder {

// One line about a peer, a misuse or the system, under the tag of this library. The same line comes at most once a
// second. Thread: any.
[[gnu::format(printf, 1, 2)]] void warn(const char* format, ...);
[[gnu::format(printf, 1, 2)]] void info(const char* format, ...);
// The line about a connection of process `pid` that failed with errno; none when its peer has died, or when
// another thread has closed it.
void warnLost(pid_t pid);

}  // namespace binder
