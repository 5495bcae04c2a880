#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace subsysctl {

// A process as the kernel shows it in /proc.
struct ProcessState {
    struct Thread {
        int32_t id = 0;
        std::string name;
        char state = '?';
    };

    int32_t pid = 0;
    char state = '?';    // as ps shows it: 'T' stopped, 't' held by a debugger
    int32_t tracer = 0;  // the process that debugs it; 0: none
    std::vector<Thread> threads;
};

// Nothing when there is no such process. Any.
[[nodiscard]] std::optional<ProcessState> processState(int32_t pid);

}  // namespace subsysctl
