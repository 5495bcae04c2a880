#pragma once

#include "tools/Output.h"

#include <device/TraceFile.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

// The verbs that read the files of recorders. They need no service: the daemon may be stopped, hung or dead.
namespace subsysctl {

struct TraceOptions {
    std::optional<double> seconds;  // only what is recorded from now on, for so long
    bool last = false;              // of the last run of each program
    std::string output;             // a file; empty: the output
};

// Writes the traces of all programs, in the trace-event format. Returns an exit code.
[[nodiscard]] int trace(const TraceOptions& options, Output& output);

struct RequestsOptions {
    bool all = false;  // those that were answered lately, too
    bool json = false;
    size_t width = SIZE_MAX;  // columns
};

// Lists the requests that wait in the daemon, oldest first; with `all` those that were answered lately, too. Returns an
// exit code.
[[nodiscard]] int requests(bool all, Output& output);

// The recordings of the daemons that run or, when none does, of the one that ran last. Without one the output says why.
[[nodiscard]] std::vector<device::Trace> daemonTraces(const char* verb, Output& output);
// The present on the clock of the trace; of an ended process, when it marked last.
[[nodiscard]] int64_t nowOf(const device::Trace& trace);

// The list of one process as it was at `now`, CLOCK_MONOTONIC in ns.
void printRequests(const device::Trace& trace, int64_t now, const RequestsOptions& options, std::ostream& out);

}  // namespace subsysctl
