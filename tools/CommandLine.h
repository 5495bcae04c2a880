#pragma once

#include "tools/Request.h"
#include "tools/Session.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace subsysctl {

// One verb of the command line, ready to run.
struct Step {
    bool rf = false;  // needs the RF callbacks
    bool ims = false;
    std::optional<Request> request;
    std::function<int(Session&)> run;  // where it is no request
    std::function<int()> look;         // where it needs no service
};

struct CommandLine {
    bool json = false;
    std::chrono::milliseconds timeout{5000};
    int32_t serial = 1;
    std::vector<Step> steps;
};

// Fills `commandLine` and returns nothing, or prints the help or the error and returns the exit code.
std::optional<int> parse(const std::vector<std::string>& arguments, CommandLine& commandLine);

// Runs the steps over one connection and returns the exit code: that of the first step that failed.
int run(const CommandLine& commandLine, Output& output);

}  // namespace subsysctl
