#pragma once

#include <android/log.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

struct Options {
    // The device folder; none: the environment's, and without that the paths of a device are those of this machine.
    std::optional<std::string> device;
    // Component libraries and folders of them, in the order in which they are loaded: all libraries, then all folders.
    std::vector<std::string> libraries;
    std::vector<std::string> folders;
    android_LogPriority logLevel = ANDROID_LOG_INFO;
    // How long the main thread may take to end after a signal.
    std::chrono::milliseconds stopTimeout{3000};

    // Reads the command line. Prints help or version (exit code 0) or what is wrong (exit code 2) and ends the process.
    [[nodiscard]] static Options parse(int argc, char** argv);
};
