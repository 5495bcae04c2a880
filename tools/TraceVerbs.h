#pragma once

#include <device/TraceFile.h>

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

// Writes the traces of all programs, in the trace-event format. Returns an exit code; what went wrong goes to `err`.
[[nodiscard]] int trace(const TraceOptions& options, std::ostream& out, std::ostream& err);

struct RequestsOptions {
    bool all = false;  // those that were answered lately, too
    bool json = false;
};

// Lists the requests that wait in the daemon, oldest first. Returns an exit code.
[[nodiscard]] int requests(const RequestsOptions& options, std::ostream& out, std::ostream& err);

// The recordings of the daemons that run or, when none does, of the one that ran last. Without one, why goes to `err`.
[[nodiscard]] std::vector<device::Trace> daemonTraces(std::ostream& err);
// The present on the clock of the trace; of an ended process, when it marked last.
[[nodiscard]] int64_t nowOf(const device::Trace& trace);

// The list of one process as it was at `now`, CLOCK_MONOTONIC in ns.
void printRequests(const device::Trace& trace, int64_t now, const RequestsOptions& options, std::ostream& out);

}  // namespace subsysctl
