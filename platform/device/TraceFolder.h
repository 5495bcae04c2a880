#pragma once

#include <string>
#include <string_view>

// The names of a recorder's files in the runtime folder. No name of a service has an '@'.
namespace device::trace {

inline constexpr std::string_view FILE_PREFIX = "trace@";
inline constexpr std::string_view LAST_PREFIX = "trace-last@";
// Locked (F_OFD_SETLK) by the process that records, for as long as it lives.
inline constexpr std::string_view LOCK_PREFIX = "trace-lock@";

[[nodiscard]] inline std::string fileName(std::string_view prefix, std::string_view program) {
    return std::string(prefix).append(program);
}

}  // namespace device::trace
