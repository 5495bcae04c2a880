#include "host/LogLevel.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

constexpr std::array<const char*, 4> NAMES{"debug", "info", "warn", "error"};  // from ANDROID_LOG_DEBUG on

}  // namespace

std::optional<android_LogPriority> parseLogLevel(std::string_view name) {
    const auto found = std::find(NAMES.begin(), NAMES.end(), name);
    if (found == NAMES.end()) return std::nullopt;
    return static_cast<android_LogPriority>(ANDROID_LOG_DEBUG + (found - NAMES.begin()));
}

const char* logLevelName() {
    const auto index = static_cast<size_t>(__android_log_get_minimum_priority() - ANDROID_LOG_DEBUG);
    return index < NAMES.size() ? NAMES[index] : "other";
}
