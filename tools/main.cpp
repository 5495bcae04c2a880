#include "tools/CommandLine.h"
#include "tools/Output.h"

#include <device/Recorder.h>

#include <unistd.h>

#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
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
