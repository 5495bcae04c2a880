#include "tools/Output.h"
#include "tools/Parser.h"
#include "tools/Run.h"

#include <device/Exhaustion.h>
#include <device/Recorder.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

std::terminate_handler sAbort = nullptr;

// An exception that is a fault in the program aborts it.
void onTerminate() {
    const char* const reason = device::exhausted();
    if (reason == nullptr) sAbort();
    std::fprintf(stderr, "subsysctl: can't go on: %s\n", reason);
    _exit(subsysctl::EXHAUSTED);
}

// Before the globals of the other files allocate.
[[gnu::constructor(101)]] void takeTerminate() {
    sAbort = std::set_terminate(onTerminate);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    subsysctl::Output output(std::cout, std::cerr, subsysctl::terminalStyle(json));
    subsysctl::CommandLine commandLine;
    subsysctl::Parser parser(commandLine, subsysctl::Parser::WHOLE_CALL);
    auto code = parser.parse(arguments, output);
    if (!code) {
        device::startRecorderWhenAsked("subsysctl");
        code = subsysctl::run(commandLine, output);
    }
    if (std::cout.flush()) return *code;
    std::cerr << "subsysctl: the output could not be written" << std::endl;
    return code == subsysctl::OK ? static_cast<int>(subsysctl::ANSWERED_WITH_ERROR) : *code;
}
