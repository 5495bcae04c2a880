#pragma once

#include "tools/CommandLine.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace subsysctl {

// Reads command lines. Each operation fills the command line and returns nothing, or prints the help or the error and
// returns the exit code; after an error the parser has stale values and is of no use.
class Parser {
public:
    // A line of the input has no options of the whole call, and no verb that reads the input.
    enum Kind { WHOLE_CALL, INPUT_LINE };

    Parser(CommandLine& commandLine, Kind kind);
    ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    std::optional<int> parse(std::vector<std::string> arguments, Output& output);
    // The words of a line; one with blanks stands in quotes.
    std::optional<int> parseLine(const std::string& line, Output& output);

private:
    std::optional<int> checkRest(Output& output) const;
    int showHelp(const std::string& verb, Output& output) const;
    int failUnknown(const std::string& word, Output& output) const;
    int failIncomplete(const std::string& problem, Output& output) const;

    CommandLine& mCommandLine;
    const Kind mKind;
    const std::unique_ptr<CLI::App> mApp;
};

}  // namespace subsysctl
