#pragma once

#include "tools/TraceRequests.h"

#include <device/TraceFile.h>

#include <vector>

namespace subsysctl {

// The binder's calls as the recorder of a process saw them, each under a name that is the same at both of its ends:
// caller, called process, code, size and, of a oneway call, its place. One that was sent oneway has no end.
[[nodiscard]] std::vector<TraceSection> tracedCalls(const device::Trace& trace);

// Whether the mark is one of the binder's.
[[nodiscard]] bool isCall(const device::TraceMark& mark);

}  // namespace subsysctl
