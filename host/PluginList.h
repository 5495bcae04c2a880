#pragma once

#include <string>
#include <vector>

// What is wrong with the device's plugin list and the files that it names, a line for each fault: the service library
// passes over them in silence. Opens no library. Thread: any.
[[nodiscard]] std::vector<std::string> pluginListFaults();
