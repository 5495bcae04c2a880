#pragma once

#include <device/TraceFile.h>

#include <ostream>
#include <vector>

namespace subsysctl {

// Writes the traces in the trace-event format, which Perfetto's and Chrome's viewers open: a JSON object with one event
// a line, by time. Each thread with marks is a track with its name; a request is an asynchronous track with its stages
// nested in it; arrows lead from thread to thread where a request moves on, and from a request in one process to the
// request of the same name that it caused in another.
void writeTraceEvents(std::ostream& out, const std::vector<device::Trace>& traces);

}  // namespace subsysctl
