#pragma once

#include <string>
#include <vector>

// The daemon from the moment when the device folder is known. Lives in a library of its own, since the service library
// reads the device's plugin list while it is loaded; looked up by name.
extern "C" {

// Loads the component libraries, starts all components, publishes the service and serves until SIGTERM or SIGINT, which
// must be blocked in every thread. Main thread. Returns the exit code; ends the process where it gets stuck.
[[nodiscard]] int subsysdServe(const std::vector<std::string>& libraries);
using SubsysdServe = int(const std::vector<std::string>&);
}
