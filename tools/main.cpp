#include "tools/Output.h"
#include "tools/Parser.h"
#include "tools/Run.h"

#include <device/Recorder.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    subsysctl::Output output(std::cout, std::cerr, subsysctl::terminalStyle(json));
    subsysctl::CommandLine commandLine;
    subsysctl::Parser parser(commandLine, subsysctl::Parser::WHOLE_CALL);
    if (const auto code = parser.parse(arguments, output)) return *code;
    device::startRecorderWhenAsked("subsysctl");
    const int code = subsysctl::run(commandLine, output);
    if (std::cout.flush()) return code;
    std::cerr << "subsysctl: the output could not be written" << std::endl;
    return code == subsysctl::OK ? static_cast<int>(subsysctl::ANSWERED_WITH_ERROR) : code;
}
