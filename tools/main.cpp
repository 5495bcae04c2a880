#include "tools/CommandLine.h"
#include "tools/Output.h"

#include <device/Exhaustion.h>
#include <device/Recorder.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>

namespace {

const std::terminate_handler sAbort = std::get_terminate();

// An exception that is a fault in the program aborts it.
void onTerminate() {
    const char* const reason = device::exhausted();
    if (reason == nullptr) sAbort();
    std::fprintf(stderr, "subsysctl: can't go on: %s\n", reason);
    _exit(subsysctl::EXHAUSTED);
}

}  // namespace

int main(int argc, char** argv) {
    std::set_terminate(onTerminate);
    subsysctl::CommandLine commandLine;
    if (const auto code = subsysctl::parse({argv + 1, argv + argc}, commandLine)) return *code;
    device::startRecorderWhenAsked("subsysctl");
    const char* noColour = std::getenv("NO_COLOR");
    const bool colour = isatty(STDOUT_FILENO) && !(noColour && *noColour);
    subsysctl::Output output(std::cout, commandLine.json, colour);
    const int code = subsysctl::run(commandLine, output);
    if (std::cout.flush()) return code;
    std::cerr << "subsysctl: the output could not be written" << std::endl;
    return code == subsysctl::OK ? static_cast<int>(subsysctl::ANSWERED_WITH_ERROR) : code;
}
