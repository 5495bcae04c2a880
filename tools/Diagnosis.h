#pragma once

#include "tools/Dump.h"
#include "tools/ProcessState.h"

#include <device/TraceFile.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// Why a request was not answered, from what can be seen of the service from outside.
namespace subsysctl {

// What is known. The daemon may be stopped, hung, or gone: then less is.
struct Evidence {
    std::string service;
    std::string folder;                  // of the names and the recordings
    bool isServed = false;               // a living process holds the name
    std::optional<DumpLines> dump;       // nothing: it did not answer in time
    std::optional<device::Trace> trace;  // of the daemon that runs, or of the one that ran last
    int64_t now = 0;                     // on the clock of the trace
    std::optional<ProcessState> daemon;  // when it lives
    std::map<int32_t, ProcessState> peers;
    std::string environment;                      // "SUBSYS_BINDER_DIR=...", or empty where it is not set
    std::map<int32_t, std::string> otherDaemons;  // the same of each process called subsysd
    std::optional<int32_t> serial;                // of the request that is asked about; nothing: all
};

struct Finding {
    enum class Level { FAULT, NOTE };

    Level level;
    std::string cause;   // one word, for scripts
    std::string text;    // what is the case
    std::string advice;  // what to do
};

// The worst first, faults before notes. No fault: nothing is wrong.
[[nodiscard]] std::vector<Finding> diagnose(const Evidence& evidence);

}  // namespace subsysctl
