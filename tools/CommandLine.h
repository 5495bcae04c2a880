#pragma once

#include "tools/Request.h"
#include "tools/Session.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace subsysctl {

// One verb of the command line, ready to run.
struct Step {
    std::string verb;
    bool rf = false;  // needs the RF callbacks
    bool ims = false;
    std::optional<Request> request{};
    std::function<int(Session&)> run{};  // where it is no request
    std::function<int(Output&)> look{};  // where it needs no service
};

struct CommandLine {
    std::chrono::milliseconds timeout{5000};
    int32_t serial = 1;
    bool takeOver = false;
    std::vector<Step> steps;
};

// The options of a whole call.
void addGlobalOptions(CLI::App& app, CommandLine& commandLine);

// All verbs with their options, each of which adds its step. The description of a verb is its text and, on a line of
// its own, an example.
void addVerbs(CLI::App& app, CommandLine& commandLine);
// Those that a line of the input can't have.
void addOuterVerbs(CLI::App& app, CommandLine& commandLine);

}  // namespace subsysctl
