#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace subsysctl {

// A process as the kernel shows it in /proc.
struct ProcessState {
    int32_t pid = 0;
    std::string name;
    char state = '?';    // as ps shows it: 'T' stopped, 't' held by a debugger
    int32_t tracer = 0;  // the process that debugs it; 0: none

    [[nodiscard]] bool isStopped() const { return state == 'T' || state == 't'; }
};

// Nothing when there is no such process, or it has ended. Thread: any.
[[nodiscard]] std::optional<ProcessState> processState(int32_t pid);

// The processes of this name, and what their environment was at their start: "NAME=value", or empty without the
// variable. Of other users' processes nothing is known. Thread: any.
[[nodiscard]] std::map<int32_t, std::string> environmentsOf(const std::string& process, const std::string& variable);

}  // namespace subsysctl
