#pragma once

#include "host/Options.h"

// The daemon from the moment when the device folder is known. Lives in a library of its own, since the service library
// reads the device's plugin list while it is loaded; looked up by name.
extern "C" {

// Loads the component libraries, starts all components, publishes the service and serves until SIGTERM or SIGINT.
// Returns the exit code; ends the process where it gets stuck. Once, on the main thread: it
// becomes the looper.
[[nodiscard]] int subsysdServe(const Options& options);
using SubsysdServe = int(const Options& options);
}
