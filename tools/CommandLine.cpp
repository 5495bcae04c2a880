#include "tools/CommandLine.h"

#include "tools/Doctor.h"
#include "tools/Help.h"
#include "tools/Manual.h"
#include "tools/ManualFormats.h"
#include "tools/NewProject.h"
#include "tools/Requests.h"
#include "tools/Run.h"
#include "tools/Text.h"
#include "tools/TraceVerbs.h"
#include "tools/Values.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <utility>

namespace subsysctl {

namespace {

constexpr char CLIENT[] = "The client itself";
constexpr char INSIDE[] = "What happens inside; takes no client's place";
constexpr char HELP[] = "Help";
constexpr double MAX_SECONDS = 1e6;
constexpr int32_t MAX_COUNT = std::numeric_limits<int32_t>::max();
const std::string COUNT_RANGE = "1 to " + std::to_string(MAX_COUNT);

// Stores the value of a text, or returns what is wrong with it.
using Store = std::function<std::string(const std::string& text)>;

CLI::Option* addOption(CLI::App& app, const std::string& name, const char* type, const std::string& help, Store store) {
    const auto take = [name, store = std::move(store)](const std::string& text) {
        if (const std::string problem = store(text); !problem.empty()) throw CLI::ValidationError(name, problem);
    };
    return app.add_option_function<std::string>(name, take, help)->type_name(type)->take_last();
}

Store storeSeconds(double& seconds, double min) {
    return [&seconds, min](const std::string& text) -> std::string {
        const bool isNumber = CLI::detail::lexical_cast(text, seconds) && !std::isnan(seconds);
        if (isNumber && seconds >= min && seconds <= MAX_SECONDS) return "";
        std::ostringstream problem;
        problem << "expected seconds, " << min << " to 1000000, not '" << text << "'";
        return problem.str();
    };
}

Store storeCount(size_t& count) {
    return [&count](const std::string& text) -> std::string {
        const auto number = parseNumber(text, 1, MAX_COUNT);
        count = static_cast<size_t>(number.value_or(0));
        return number ? "" : "expected an integer, " + COUNT_RANGE + ", not '" + text + "'";
    };
}

// One of these words; any other is told what it may be.
CLI::Validator oneOf(const std::vector<std::string>& words) {
    const auto check = [words](const std::string& word) -> std::string {
        if (std::find(words.begin(), words.end(), word) != words.end()) return "";
        const std::string like = nearest(word, words);
        return "expected " + CLI::detail::join(words, ", ") + ", not '" + word + "'" +
               (like.empty() ? "" : "; did you mean " + like + "?");
    };
    return {check, "{" + CLI::detail::join(words, ",") + "}"};
}

CLI::App* addVerb(CLI::App& app, const std::string& name, const char* group, const std::string& text,
                  const std::string& example) {
    return app.add_subcommand(name, text + "\n" + example)->group(group)->immediate_callback();
}

void addStatus(CLI::App& app, std::vector<Step>& steps) {
    addVerb(app, "status", CLIENT, "Is it served? Version, hash, pid, round-trip time.", "status")->callback([&steps] {
        steps.push_back({.verb = "status", .run = [](Session& session) { return session.status(); }});
    });
}

void addDump(CLI::App& app, std::vector<Step>& steps) {
    addVerb(app, "dump", INSIDE, "The service's state: clients, components, plugins.", "dump")->callback([&steps] {
        steps.push_back({.verb = "dump", .run = [](Session& session) { return session.dump(); }});
    });
}

void addLog(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = addVerb(app, "log", INSIDE, "Change from which level on the daemon logs.", "log debug");
    const auto level = std::make_shared<std::string>();
    verb->add_option("LEVEL", *level, "The lowest level that is written.")
        ->required()
        ->check(oneOf({"debug", "info", "warn", "error"}));
    verb->callback([&steps, level] {
        const auto setLevel = [given = *level](Session& session) { return session.dump({"log", given.c_str()}); };
        steps.push_back({.verb = "log", .run = setLevel});
    });
}

// The parsed flags and the options that the step keeps.
struct WatchArguments {
    bool ims = false;
    bool noRf = false;
    double seconds = 0;
    size_t count = 0;
};

WatchOptions watchOptions(const CLI::App& verb, const WatchArguments& arguments) {
    WatchOptions options{!arguments.noRf, arguments.ims, {}, {}};
    if (verb.count("--for") > 0) options.seconds = arguments.seconds;
    if (verb.count("--count") > 0) options.count = arguments.count;
    return options;
}

void addWatch(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = addVerb(app, "watch", CLIENT, "Show RF indications, also those that came during earlier verbs.",
                             "watch --for 10 --count 3");
    const auto arguments = std::make_shared<WatchArguments>();
    verb->add_flag("--ims", arguments->ims, "IMS ORTC indications too.");
    verb->add_flag("--no-rf", arguments->noRf, "With --ims: IMS indications only; takes no RF client's place.")
        ->needs("--ims");
    addOption(*verb, "--for", "SECONDS", "End after so long, 0 to 1000000; without it never.",
              storeSeconds(arguments->seconds, 0));
    addOption(*verb, "--count", "N",
              "End after so many indications, " + COUNT_RANGE + "; 124 when --for ends it before.",
              storeCount(arguments->count));
    verb->callback([&steps, verb, arguments] {
        const WatchOptions options = watchOptions(*verb, std::exchange(*arguments, {}));
        steps.push_back({.verb = "watch", .rf = options.rf, .ims = options.ims, .run = [options](Session& session) {
                             return session.watch(options);
                         }});
    });
}

// They only become the client: a watch or a request that follows in the same call does that by itself.
void addRegistrations(CLI::App& app, std::vector<Step>& steps) {
    const auto add = [&](const char* name, const char* help, const char* client, bool rf) {
        addVerb(app, name, CLIENT, help, name)->callback([=, &steps] {
            steps.push_back({.verb = name, .rf = rf, .ims = !rf, .run = [client](Session& session) {
                                 return session.showRegistered(client);
                             }});
        });
    };
    add("set-callback", "Become the RF client until the end of this call.", "rf", true);
    add("set-ims-ortc-callback", "Become an IMS ORTC client until the end of this call.", "ims", false);
}

void addTrace(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = addVerb(app, "trace", INSIDE,
                             "Write what the daemon and traced clients (SUBSYS_TRACE=1) did, as trace-event JSON.",
                             "trace --for 2 --output trace.json");
    const auto options = std::make_shared<TraceOptions>();
    const auto seconds = std::make_shared<double>();
    addOption(*verb, "--for", "SECONDS",
              "Only what happens in so long from now, 0 to 1000000; without it all that is recorded.",
              storeSeconds(*seconds, 0));
    verb->add_flag("--last", options->last, "Of the last run of each program, before the present one.");
    verb->add_option("--output", options->output, "Into this file.")->type_name("FILE");
    verb->callback([&steps, verb, options, seconds] {
        TraceOptions given = std::exchange(*options, {});
        if (verb->count("--for") > 0) given.seconds = *seconds;
        steps.push_back({.verb = "trace", .look = [given](Output& output) { return trace(given, output); }});
    });
}

void addRequests(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = addVerb(app, "requests", INSIDE, "List the requests that wait, oldest first.", "requests --all");
    const auto all = std::make_shared<bool>(false);
    verb->add_flag("--all", *all, "Those that were answered lately, too.");
    verb->callback([&steps, all] {
        const bool given = std::exchange(*all, false);
        steps.push_back({.verb = "requests", .look = [given](Output& output) { return requests(given, output); }});
    });
}

void addDoctor(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb =
        addVerb(app, "doctor", INSIDE,
                "Say what is wrong, the worst first, and what to do; exit code 0 when nothing is wrong.", "doctor 7");
    const auto serial = std::make_shared<std::optional<int32_t>>();
    const auto storeSerial = [serial](const std::string& text) { return store(text, serial->emplace()); };
    addOption(*verb, "SERIAL", "N", "Why the request with this serial or token is not answered.", storeSerial);
    verb->callback([&steps, serial] {
        const auto look = [given = std::exchange(*serial, {})](Output& output) { return doctor(given, output); };
        steps.push_back({.verb = "doctor", .look = look});
    });
}

void addNew(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb =
        addVerb(app, "new", "For authors", "Write a project to start from into the folder NAME.", "new plugin mine");
    const auto project = std::make_shared<std::pair<std::string, std::string>>();
    verb->add_option("KIND", project->first, "What to write.")
        ->required()
        ->check(oneOf({"plugin", "component", "client"}));
    verb->add_option("NAME", project->second, "Of the project: a letter, then letters, digits, '_' and '-'.")
        ->required()
        ->check(refuseProjectName);
    verb->callback([&steps, project] {
        const auto look = [given = *project](Output& output) { return newProject(given.first, given.second, output); };
        steps.push_back({.verb = "new", .look = look});
    });
}

void addRequest(CLI::App& app, std::vector<Step>& steps, const RequestVerb& request) {
    CLI::App* verb = addVerb(app, request.name, request.group, request.help, request.example);
    for (const RequestOption& option : request.options) {
        addOption(*verb, option.name, option.type, option.help, option.store)->required(option.required);
    }
    verb->callback([&steps, verb, take = request.take] {
        Request taken = take([verb](const char* option) { return verb->count(option) > 0; });
        const bool rf = taken.needs == Needs::RF;
        const bool ims = taken.needs == Needs::IMS;
        steps.push_back({.verb = verb->get_name(), .rf = rf, .ims = ims, .request = std::move(taken)});
    });
}

void addBatch(CLI::App& app, std::vector<Step>& steps) {
    addVerb(
        app, "batch", CLIENT,
        "Run the verbs of each line of the input, in order; '-' is short for it. A word with blanks stands in quotes, "
        "in which a backslash takes the next character as it is. A line has no options of the whole call, and not the "
        "verbs batch, new and help.",
        "batch < verbs")
        ->callback([&steps] {
            const auto run = [](Session& session) { return runLines(std::cin, session); };
            steps.push_back({.verb = "batch", .run = run});
        });
}

void addHelp(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = addVerb(app, "help", HELP, "Show all verbs, or the options of one.", "help watch");
    const auto format = std::make_shared<std::string>();
    verb->add_option("VERB", "The verb.");
    verb->add_option("--as", *format, "As a manual page, or as a shell's completions.")
        ->type_name("FORMAT")
        ->check(oneOf({"man", "bash", "zsh", "fish"}));
    verb->callback([&app, &steps, format] {
        const auto look = [manual = manualOf(app), name = *format](Output& output) {
            for (const ManualFormat& each : MANUAL_FORMATS) {
                if (each.name == name) each.print(manual, output.stream());
            }
            if (name.empty()) printHelp(manual, output.style().textWidth, output.stream());
            return static_cast<int>(OK);
        };
        steps.push_back({.verb = "help", .look = look});
    });
}

}  // namespace

void addGlobalOptions(CLI::App& app, CommandLine& commandLine) {
    // Looked for before, so that errors of usage are objects, too.
    app.add_flag_callback(
        "--json", [] {}, "Each outcome as one JSON object on a line, errors and notes too.");
    const auto seconds = std::make_shared<double>();
    const auto storeTimeout = [&commandLine, seconds](const std::string& text) {
        std::string problem = storeSeconds(*seconds, 0.001)(text);
        if (problem.empty()) commandLine.timeout = std::chrono::milliseconds(std::llround(*seconds * 1000));
        return problem;
    };
    addOption(app, "--timeout", "SECONDS",
              "How long to wait for each answer, 0.001 to 1000000 (default 5); the look-up of the service: 2 at most.",
              storeTimeout);
    const auto storeSerial = [&commandLine](const std::string& text) { return store(text, commandLine.serial); };
    addOption(app, "--serial", "N",
              "The first request's serial, counting on from there, " + rangeOf<int32_t>() + " (default 1).",
              storeSerial);
    app.add_flag("--take-over", commandLine.takeOver, "Become the RF client also in place of another process.");
}

void addVerbs(CLI::App& app, CommandLine& commandLine) {
    for (const RequestVerb& verb : requestVerbs()) addRequest(app, commandLine.steps, verb);
    addWatch(app, commandLine.steps);
    addStatus(app, commandLine.steps);
    addRegistrations(app, commandLine.steps);
    addDump(app, commandLine.steps);
    addLog(app, commandLine.steps);
    addTrace(app, commandLine.steps);
    addRequests(app, commandLine.steps);
    addDoctor(app, commandLine.steps);
}

void addOuterVerbs(CLI::App& app, CommandLine& commandLine) {
    addBatch(app, commandLine.steps);
    addNew(app, commandLine.steps);
    addHelp(app, commandLine.steps);
}

}  // namespace subsysctl
