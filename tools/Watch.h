#pragma once

#include "tools/ExitCode.h"
#include "tools/Mailbox.h"
#include "tools/Output.h"

#include <cstddef>
#include <optional>

namespace subsysctl {

struct WatchOptions {
    bool rf = true;
    bool ims = false;
    std::optional<double> seconds;  // without it until the end of the server, `count` or SIGINT
    std::optional<size_t> count;
};

// Prints the indications that come, and at the end how many they were.
[[nodiscard]] ExitCode watchIndications(const WatchOptions& options, Mailbox& mailbox, Output& output);

}  // namespace subsysctl
