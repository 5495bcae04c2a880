#include "tools/CommandLine.h"

#include "tools/NewProject.h"
#include "tools/Requests.h"
#include "tools/TraceVerbs.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <utility>

namespace subsysctl {

namespace {

constexpr char CLIENT[] = "The client itself";
constexpr char INSIDE[] = "What happens inside; needs no service";
constexpr double MAX_SECONDS = 1e6;

constexpr char DESCRIPTION[] =
    "Sends requests to the subsys service and shows what comes back.\n"
    "Several verbs may follow each other; they run in turn over one connection, each until its answer is there:\n"
    "  subsysctl get-swtp-status get-lcd-info --type 1";

constexpr char FOOTER[] =
    "An integer that is not given is 0, a text or a byte vector empty; integers are decimal or 0x hexadecimal, byte\n"
    "vectors pairs of hexadecimal digits. Without --data-len that is the number of bytes of --data.\n"
    "The service has one RF client and two IMS ORTC clients. A call with an RF verb becomes the RF client in place of\n"
    "another one, whose watch then stays silent; a third IMS client is ignored. Both IMS clients get every IMS "
    "answer:\n"
    "give them different serials (--serial) when both send the same request.\n"
    "\n"
    "Exit codes: 0 answered with error 0; 1 answered with another error, or the call failed; 2 wrong usage;\n"
    "69 no such service, or it died; 71 out of memory or threads; 124 no answer in time. Of several verbs the first\n"
    "that fails decides; the others still run, unless the service is gone.\n"
    "SUBSYS_BINDER_DIR names the folder of the service names; NO_COLOR turns colours off.";

// CLI::Range lets "nan" pass.
std::string refuseNan(const std::string& text) {
    double value = 0;
    return CLI::detail::lexical_cast(text, value) && std::isnan(value) ? "not a number: " + text : "";
}

void addGlobalOptions(CLI::App& app, CommandLine& commandLine) {
    app.add_flag("--json", commandLine.json, "One JSON object a line");
    app.add_option_function<double>(
           "--timeout",
           [&](double seconds) { commandLine.timeout = std::chrono::milliseconds(std::llround(seconds * 1000)); },
           "How long to wait for each answer (default 5)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, MAX_SECONDS))
        ->check(refuseNan);
    app.add_option("--serial", commandLine.serial, "The first request's serial, counting on from there (default 1)")
        ->type_name("N");
}

void addStatus(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = app.add_subcommand("status", "Is it served? Version, hash, pid, round-trip time\n  status");
    verb->group(CLIENT)->immediate_callback();
    verb->callback([&steps] {
        steps.push_back({false, false, {}, [](Session& session) { return session.status(); }, {}});
    });
}

void addDump(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = app.add_subcommand(
        "dump", "The service's state: clients, components, plugins; takes no client's place\n  dump");
    verb->group(INSIDE)->immediate_callback();
    verb->callback([&steps] {
        steps.push_back({false, false, {}, [](Session& session) { return session.dump(); }, {}});
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
    CLI::App* verb = app.add_subcommand(
        "watch", "Show RF indications, also those that came during earlier verbs\n  watch --for 10 --count 3");
    const auto arguments = std::make_shared<WatchArguments>();
    verb->group(CLIENT)->immediate_callback();
    verb->add_flag("--ims", arguments->ims, "IMS ORTC indications too");
    verb->add_flag("--no-rf", arguments->noRf, "With --ims: not those of RF, whose client stays another one")
        ->needs("--ims");
    verb->add_option("--for", arguments->seconds, "End after so long (default: never)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, MAX_SECONDS))
        ->check(refuseNan);
    verb->add_option("--count", arguments->count, "End after so many; 124 when --for ends it before")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    verb->callback([&steps, verb, arguments] {
        const WatchOptions options = watchOptions(*verb, *arguments);
        *arguments = {};
        steps.push_back(
            {options.rf, options.ims, {}, [options](Session& session) { return session.watch(options); }, {}});
    });
}

// They only become the client: a watch or a request that follows in the same call does that by itself.
void addRegistrations(CLI::App& app, std::vector<Step>& steps) {
    const auto add = [&](const char* name, const char* help, bool rf) {
        CLI::App* verb = app.add_subcommand(name, std::string(help) + "\n  " + name);
        verb->group(CLIENT)->immediate_callback();
        verb->callback([&steps, rf] {
            steps.push_back({rf, !rf, {}, [](Session&) { return static_cast<int>(OK); }, {}});
        });
    };
    add("set-callback", "Become the RF client until the end of this call", true);
    add("set-ims-ortc-callback", "Become an IMS ORTC client until the end of this call", false);
}

void addTrace(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = app.add_subcommand(
        "trace",
        "Write what the daemon and traced clients (SUBSYS_TRACE=1) did, as trace-event JSON\n  trace --for 2 "
        "--output trace.json");
    const auto options = std::make_shared<TraceOptions>();
    verb->group(INSIDE)->immediate_callback();
    verb->add_option("--for", options->seconds, "Only what happens in so long from now (default: all that is recorded)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, MAX_SECONDS))
        ->check(refuseNan);
    verb->add_flag("--last", options->last, "Of the last run of each program, before the present one");
    verb->add_option("--output", options->output, "Into this file")->type_name("FILE");
    verb->callback([&steps, options] {
        const auto look = [given = std::exchange(*options, {})] { return trace(given, std::cout, std::cerr); };
        steps.push_back({false, false, {}, {}, look});
    });
}

void addRequests(CLI::App& app, CommandLine& commandLine) {
    CLI::App* verb = app.add_subcommand("requests", "List the requests that wait, oldest first\n  requests --all");
    const auto all = std::make_shared<bool>(false);
    verb->group(INSIDE)->immediate_callback();
    verb->add_flag("--all", *all, "Those that were answered lately, too");
    verb->callback([&commandLine, all] {
        const auto look = [&commandLine, given = std::exchange(*all, false)] {
            return requests({given, commandLine.json}, std::cout, std::cerr);
        };
        commandLine.steps.push_back({false, false, {}, {}, look});
    });
}

void addNew(CLI::App& app, std::vector<Step>& steps) {
    CLI::App* verb = app.add_subcommand("new", "Write a project to start from into the folder NAME\n  new plugin mine");
    const auto project = std::make_shared<std::pair<std::string, std::string>>();
    verb->group("For authors")->immediate_callback();
    verb->add_option("KIND", project->first, "plugin, component or client")
        ->required()
        ->check(CLI::IsMember({"plugin", "component", "client"}));
    verb->add_option("NAME", project->second, "Of the project")->required()->check(refuseProjectName);
    verb->callback([&steps, project] {
        const auto look = [given = *project] { return static_cast<int>(newProject(given.first, given.second)); };
        steps.push_back({false, false, {}, {}, look});
    });
}

Step requestStep(Request request) {
    const bool rf = request.needs == Needs::RF;
    const bool ims = request.needs == Needs::IMS;
    return {rf, ims, std::move(request), {}, {}};
}

void addRequest(CLI::App& app, std::vector<Step>& steps, const RequestVerb& request) {
    CLI::App* verb = app.add_subcommand(request.name, request.help);
    verb->group(request.group)->immediate_callback();
    for (const RequestOption& option : request.options) {
        const auto store = [option](const std::string& text) {
            if (!option.store(text)) throw CLI::ValidationError(option.name, "not a value: " + text);
        };
        verb->add_option_function<std::string>(option.name, store, option.help)
            ->type_name(option.type)
            ->required(option.required)
            ->take_last();
    }
    verb->callback([&steps, verb, take = request.take] {
        steps.push_back(requestStep(take([verb](const char* option) { return verb->count(option) > 0; })));
    });
}

}  // namespace

std::optional<int> parse(const std::vector<std::string>& arguments, CommandLine& commandLine) {
    CLI::App app(DESCRIPTION, "subsysctl");
    app.footer(FOOTER);
    app.fallthrough();
    app.require_subcommand(1, 0);
    addGlobalOptions(app, commandLine);
    for (const RequestVerb& verb : requestVerbs()) addRequest(app, commandLine.steps, verb);
    addWatch(app, commandLine.steps);
    addStatus(app, commandLine.steps);
    addRegistrations(app, commandLine.steps);
    addDump(app, commandLine.steps);
    addTrace(app, commandLine.steps);
    addRequests(app, commandLine);
    addNew(app, commandLine.steps);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
        if (const auto rest = app.remaining(); !rest.empty()) {
            std::cerr << "subsysctl: no such verb or option: " << rest.front() << std::endl;
            return USAGE;
        }
        return app.exit(error) == 0 ? OK : USAGE;
    }
    return std::nullopt;
}

int run(const CommandLine& commandLine, Output& output) {
    Session session(output, commandLine.timeout, commandLine.serial);
    const auto& steps = commandLine.steps;
    const bool needsService =
        std::any_of(steps.begin(), steps.end(), [](const Step& step) { return step.look == nullptr; });
    int result = needsService ? session.connect() : static_cast<int>(OK);
    if (result == OK && std::any_of(steps.begin(), steps.end(), [](const Step& step) { return step.rf; })) {
        result = session.registerRf();
    }
    if (result == OK && std::any_of(steps.begin(), steps.end(), [](const Step& step) { return step.ims; })) {
        result = session.registerIms();
    }
    if (result != OK) return result;
    for (const Step& step : steps) {
        const int code = step.look ? step.look() : step.request ? session.request(*step.request) : step.run(session);
        if (result == OK) result = code;
        if (code == NO_SERVICE) break;
    }
    return result;
}

}  // namespace subsysctl
