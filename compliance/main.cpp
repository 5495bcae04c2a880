// subsys-compliance: whether a service, a plugin or a component keeps the rules.

#include "compliance/Checks.h"
#include "compliance/Client.h"
#include "compliance/Component.h"
#include "compliance/Plugin.h"
#include "compliance/Report.h"
#include "compliance/Service.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

using namespace compliance;
using std::chrono::milliseconds;

constexpr int FAULTS = 1;
constexpr int USAGE = 2;
// A check waits for an answer, and does little else.
constexpr milliseconds BESIDE_WAITING{10000};

constexpr char DESCRIPTION[] = "Checks whether a service, an ICC plugin or a component library keeps the rules.";
constexpr char FOOTER[] =
    "Each check is a line: ok, FAILED with what was expected and seen and the page where the rule stands, or not\n"
    "checked with the reason. Exit codes: 0 none failed, and at least one is ok; 1 otherwise; 2 wrong usage.\n"
    "docs/compliance.md says what is checked.";

struct Options {
    bool json = false;
    double limitSeconds = 5;
    std::string file;
    ServiceOptions service{std::string(interface::ISubsys::descriptor) + "/default"};
    std::string clientKind;

    [[nodiscard]] milliseconds limit() const { return milliseconds(std::llround(limitSeconds * 1000)); }
};

struct Verbs {
    CLI::App* service;
    CLI::App* plugin;
    CLI::App* component;
    CLI::App* client;
};

Verbs addVerbs(CLI::App& app, Options& options) {
    app.add_flag("--json", options.json, "One JSON object a line");
    app.add_option("--limit", options.limitSeconds, "How long to wait for an answer (default 5)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.1, 600.0));
    const Verbs verbs{app.add_subcommand("service", "A served ISubsys\n  service --intrusive"),
                      app.add_subcommand("plugin", "An ICC plugin: calls each of its functions\n  plugin libmine.so"),
                      app.add_subcommand("component", "A component library\n  component libmine.so"),
                      // For the program itself.
                      app.add_subcommand("client", "")->group("")};
    verbs.service->add_option("NAME", options.service.name, "Under which it is published (default: the usual one)");
    verbs.service->add_flag("--intrusive", options.service.isIntrusive,
                            "Take the places of clients and send each request, too");
    verbs.plugin->add_option("FILE", options.file)->required();
    verbs.component->add_option("FILE", options.file)->required();
    verbs.client->add_option("KIND", options.clientKind)->required();
    verbs.client->add_option("NAME", options.service.name)->required();
    return verbs;
}

int run(const Verbs& verbs, Options& options) {
    if (verbs.client->parsed()) return runClient(options.clientKind, options.service.name);
    options.service.limit = options.limit();
    Report report(std::cout, options.json);
    runChecks(report, options.limit() + BESIDE_WAITING, [&](Checks& checks) {
        if (verbs.service->parsed()) checkService(checks, options.service);
        if (verbs.plugin->parsed()) checkPlugin(checks, options.file);
        if (verbs.component->parsed()) checkComponent(checks, options.file, options.limit());
    });
    const bool isPassed = report.finish();
    if (!std::cout) std::cerr << "subsys-compliance: the output could not be written\n";
    return isPassed && std::cout ? EXIT_SUCCESS : FAULTS;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app(DESCRIPTION, "subsys-compliance");
    app.footer(FOOTER);
    app.set_version_flag("--version", "subsys-compliance " SUBSYS_VERSION);
    app.fallthrough();
    app.require_subcommand(0, 1);
    Options options;
    const Verbs verbs = addVerbs(app, options);
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty()) throw CLI::RequiredError("service, plugin or component");
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : USAGE;
    }
    return run(verbs, options);
}
