#pragma once

#include <android/log.h>

#include <optional>
#include <string_view>

// What a level of the log is called.
inline constexpr const char* LOG_LEVELS = "debug, info, warn or error";

// The level with the name; nothing for any other text.
[[nodiscard]] std::optional<android_LogPriority> parseLogLevel(std::string_view name);

// The lowest level that the process writes now. Thread: any.
[[nodiscard]] const char* logLevelName();
