#include "tools/Parser.h"

#include "tools/Help.h"
#include "tools/Manual.h"
#include "tools/Text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iomanip>
#include <sstream>
#include <utility>

namespace subsysctl {

namespace {

int fail(const std::string& message, const std::string& hint, Output& output) {
    Json error = errorJson("usage", "", message);
    if (!hint.empty()) error["hint"] = hint;
    output.report(error);
    return USAGE;
}

// The verb that the arguments end with; empty when there is none.
std::string lastVerb(const CLI::App& app) {
    const auto verbs = app.get_subcommands();
    return verbs.empty() ? "" : verbs.back()->get_name();
}

std::vector<ManualOption> optionsOf(const Manual& manual, const std::string& verb) {
    std::vector<ManualOption> options = manual.options;
    if (const ManualVerb* found = manual.find(verb)) {
        options.insert(options.end(), found->options.begin(), found->options.end());
    }
    return options;
}

template <class Entries>
std::vector<std::string> namesOf(const Entries& entries) {
    std::vector<std::string> names;
    names.reserve(std::size(entries));
    for (const auto& entry : entries) names.push_back(entry.name);
    return names;
}

// Nothing when a quote is open.
std::optional<std::vector<std::string>> wordsOf(const std::string& line) {
    std::vector<std::string> words;
    std::istringstream input(line);
    for (std::string word; !(input >> std::ws).eof();) {
        if (!(input >> std::quoted(word, input.peek() == '\'' ? '\'' : '"'))) return std::nullopt;
        words.push_back(word);
    }
    return words;
}

}  // namespace

Parser::Parser(CommandLine& commandLine, Kind kind)
    : mCommandLine(commandLine), mKind(kind), mApp(std::make_unique<CLI::App>("", "subsysctl")) {
    mApp->fallthrough();
    mApp->allow_extras();
    mApp->set_help_flag("-h,--help", "Show what there is, or the options of the verb before.");
    addVerbs(*mApp, commandLine);
    if (kind == INPUT_LINE) return;
    mApp->set_version_flag("--version", "subsysctl " SUBSYS_VERSION, "Show the version.");
    addGlobalOptions(*mApp, commandLine);
    addOuterVerbs(*mApp, commandLine);
}

Parser::~Parser() = default;

std::optional<int> Parser::parse(std::vector<std::string> arguments, Output& output) {
    const bool isHelp = !arguments.empty() && arguments.front() == "help";
    if (isHelp && arguments.size() == 2 && !arguments[1].starts_with('-')) return showHelp(arguments[1], output);
    if (!arguments.empty() && arguments.back() == "-") arguments.back() = "batch";
    std::reverse(arguments.begin(), arguments.end());
    try {
        mApp->parse(std::move(arguments));
        return checkRest(output);
    } catch (const CLI::CallForHelp&) {
        return showHelp(lastVerb(*mApp), output);
    } catch (const CLI::CallForVersion& version) {
        output.stream() << version.what() << std::endl;
        return OK;
    } catch (const CLI::ValidationError& error) {
        return fail(error.what(), "", output);
    } catch (const CLI::ParseError& error) {
        return failIncomplete(error.what(), output);
    }
}

std::optional<int> Parser::parseLine(const std::string& line, Output& output) {
    auto words = wordsOf(line);
    return words ? parse(*std::move(words), output) : fail("a quote is open", "", output);
}

std::optional<int> Parser::checkRest(Output& output) const {
    if (const auto rest = mApp->remaining(); !rest.empty()) return failUnknown(rest.front(), output);
    if (mCommandLine.steps.empty()) return fail("no verb", "'subsysctl help' shows all", output);
    return std::nullopt;
}

int Parser::showHelp(const std::string& verb, Output& output) const {
    const Manual manual = manualOf(*mApp);
    const size_t width = output.style().textWidth;
    if (verb.empty()) {
        printHelp(manual, width, output.stream());
        return OK;
    }
    const ManualVerb* const found = manual.find(verb);
    if (found == nullptr) return failUnknown(verb, output);
    printHelp(manual, *found, width, output.stream());
    return OK;
}

int Parser::failUnknown(const std::string& word, Output& output) const {
    const Manual manual = manualOf(*mApp);
    const bool isOption = word.starts_with('-');
    const std::string verb = lastVerb(*mApp);
    const auto known = isOption ? namesOf(optionsOf(manual, verb)) : namesOf(manual.verbs);
    const std::string like = nearest(word.substr(0, word.find('=')), known);
    const std::string topic = mKind == INPUT_LINE ? " batch" : isOption && !verb.empty() ? " " + verb : "";
    const std::string hint = "'subsysctl help" + topic + "' shows " + (mKind == INPUT_LINE ? "what a line has" : "all");
    return fail(std::string("no such ") + (isOption ? "option" : "verb") + ": '" + word + "'",
                like.empty() ? hint : "did you mean " + like + "?", output);
}

// The problem begins with the name of an option.
int Parser::failIncomplete(const std::string& problem, Output& output) const {
    std::string hint;
    for (const ManualOption& option : optionsOf(manualOf(*mApp), lastVerb(*mApp))) {
        if (problem.starts_with(option.name)) hint = option.usage() + ": " + option.meaning();
    }
    return fail(problem, hint, output);
}

}  // namespace subsysctl
