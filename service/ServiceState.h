#pragma once

#include <cstdint>
#include <string>

namespace hal {

// What the library knows of itself, in lines of "key: value": interface, uptime, clients, components, plugins. Takes no
// lock and waits for no thread. `startTime` is that of the service, in milliseconds of SystemClock.
// Thread: any, after start-up.
[[nodiscard]] std::string describeState(uint64_t startTime);

}  // namespace hal
