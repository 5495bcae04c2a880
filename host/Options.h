#pragma once

#include <optional>
#include <string>
#include <vector>

#include <android/log.h>

struct Options {
    // The device folder; none: the environment's, and without that the paths of a device are those of this machine.
    std::optional<std::string> device;
    android_LogPriority logLevel = ANDROID_LOG_INFO;
    // Component libraries, in the order in which they are loaded.
    std::vector<std::string> libraries;

    // Reads the command line. Prints help (exit code 0) or what is wrong (exit code 2) and ends the process.
    [[nodiscard]] static Options parse(int argc, char** argv);
};
