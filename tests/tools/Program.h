#pragma once

#include "tests/support/Process.h"

#include <string>

namespace test {

struct Result {
    int code;
    std::string text;
};

// Runs the program to its end; the shell's redirections say which output is kept.
inline Result run(const std::string& arguments, const std::string& channels = "2>&1") {
    Process process({"/bin/sh", "-c", std::string(SUBSYSCTL) + " " + arguments + " " + channels});
    const int code = process.wait();
    return {code, process.output()};
}

}  // namespace test
