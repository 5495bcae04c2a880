#pragma once

#include "tools/Output.h"

#include <chrono>

namespace subsysctl {

// Ends the process with a last line and exit code 124 when a call into the server has not returned in time: a server
// that is stopped holds the calling thread for as long as it likes. One at a time in a process.
class CallTimer {
public:
    CallTimer(std::chrono::milliseconds timeout, Output::Line line);
    ~CallTimer();
    CallTimer(const CallTimer&) = delete;
    CallTimer& operator=(const CallTimer&) = delete;
};

}  // namespace subsysctl
