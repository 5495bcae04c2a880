#pragma once

#include <string>

namespace hal {

// What keeps the file from being handed to dlopen, or null: the loader waits for ever on a FIFO, and the process dies
// with SIGBUS when it maps a library that was cut short. Null for whatever the loader refuses by itself, a missing file
// included. Any.
[[nodiscard]] const char* findUnloadable(const std::string& path);

}  // namespace hal
