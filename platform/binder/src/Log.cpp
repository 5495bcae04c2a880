#include "Log.h"

#include "Limits.h"

#include <android/log.h>
#include <device/Mutex.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string_view>

namespace binder {
namespace {

using Clock = std::chrono::steady_clock;

struct Line {
    size_t hash = 0;
    Clock::time_point when;
};

device::Mutex sLock;
std::array<Line, 32> sRecent SUBSYS_GUARDED_BY(sLock);

// Whether the line was not written during the last second. A line more than there are places for is written.
bool isNews(std::string_view text) {
    const size_t hash = std::hash<std::string_view>()(text);
    const auto now = Clock::now();
    const device::MutexLock lock(sLock);
    for (Line& each : sRecent) {
        if (each.hash != hash) continue;
        if (now - each.when < QUIET_TIME) return false;
        each.when = now;
        return true;
    }
    *std::min_element(sRecent.begin(), sRecent.end(), [](const Line& a, const Line& b) { return a.when < b.when; }) = {
        hash, now};
    return true;
}

void write(android_LogPriority priority, const char* format, va_list arguments) {
    std::array<char, 512> text{};
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): a fault of the check
    vsnprintf(text.data(), text.size(), format, arguments);
    if (isNews(text.data())) __android_log_write(priority, "Binder", text.data());
}

}  // namespace

void warn(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write(ANDROID_LOG_WARN, format, arguments);
    va_end(arguments);
}

void info(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write(ANDROID_LOG_INFO, format, arguments);
    va_end(arguments);
}

void warnLost(pid_t pid) {
    const bool isExpected = errno == EPIPE || errno == ECONNRESET || errno == ENOENT;
    if (!isExpected) warn("a connection of process %d is lost: %s", pid, strerror(errno));
}

}  // namespace binder
