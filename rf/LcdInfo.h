#pragma once

#include <optional>
#include <string>

namespace hal {

// The LCD panel's version as "/proc/devinfo/lcd" tells it: what follows "Device version: " up to the next white space,
// empty where the text is another, cut to 99 bytes. None, with an error line, when the file can't be opened or holds
// fewer than 19 bytes. Never blocks. Thread: any.
[[nodiscard]] std::optional<std::string> readLcdInfo(const char* tag);

}  // namespace hal
