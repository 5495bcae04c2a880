#pragma once

#include "tools/CommandLine.h"

#include <istream>

namespace subsysctl {

// Runs the steps in turn over one connection, after it registered for what they need. Returns the exit code of the
// first that failed; when the service is gone, the others don't run.
int run(const CommandLine& commandLine, Output& output);

// The same with the verbs of each line of the input; empty lines and those that begin with '#' are skipped.
int runLines(std::istream& input, Session& session);

}  // namespace subsysctl
