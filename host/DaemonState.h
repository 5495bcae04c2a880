#pragma once

#include <string>

// What the library can't know, in lines of "key: value" like its own dump: process, log level, faults of the plugin
// list and, on Linux, message loops, binder threads and the processes that this one is in contact with. Waits for no
// loop and no process. Thread: any.
[[nodiscard]] std::string describeDaemon();
