#pragma once

#include <chrono>

namespace subsysctl {

// Ends the process with exit code 124 when a call into the server has not returned in time: a server that is stopped
// holds the calling thread for as long as it likes. One at a time in a process.
class CallTimer {
public:
    explicit CallTimer(std::chrono::milliseconds timeout);
    ~CallTimer();
    CallTimer(const CallTimer&) = delete;
    CallTimer& operator=(const CallTimer&) = delete;
};

}  // namespace subsysctl
