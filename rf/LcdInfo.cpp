#include "rf/LcdInfo.h"

#include <device/DevicePath.h>
#include <mindroid/Log.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>

using mindroid::Log;

namespace hal {

namespace {

constexpr const char* LCD_TYPE_PATH = "/proc/devinfo/lcd";
constexpr size_t TEXT_SIZE = 100;
constexpr ssize_t MIN_LENGTH = 19;

// One byte more than is read, so that what is scanned ends.
using LcdText = std::array<char, TEXT_SIZE + 1>;

}  // namespace

std::optional<std::string> readLcdInfo(const char* tag) {
    // Non-blocking, since a FIFO in the file's place would hold the caller for ever.
    const int fd = open(device::path(LCD_TYPE_PATH).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        Log::e(tag, "Open LCD_TYPE_PATH failed!");
        return std::nullopt;
    }
    LcdText text = {};
    const ssize_t length = read(fd, text.data(), TEXT_SIZE);
    close(fd);
    if (length < MIN_LENGTH) {
        // Deliberate: it says SWTP. Readers of the log look for this text.
        Log::e(tag, "Read SWTP failed! Unexpected Length");
        return std::nullopt;
    }
    std::array<char, TEXT_SIZE> version = {};
    const int matched = std::sscanf(text.data(), "Device version: %99s", version.data());
    Log::d(tag, "read lcd_info_tmp: %s, num: %d ", version.data(), matched);
    return version.data();
}

}  // namespace hal
