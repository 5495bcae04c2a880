#include "host/Options.h"

#include <cstdlib>
#include <map>

#include <CLI/CLI.hpp>

namespace {

constexpr int EXIT_USAGE = 2;

const std::map<std::string, android_LogPriority> LEVELS{
    {"debug", ANDROID_LOG_DEBUG}, {"info", ANDROID_LOG_INFO}, {"warn", ANDROID_LOG_WARN}, {"error", ANDROID_LOG_ERROR}};

constexpr const char* ABOUT =
    "Publishes the ISubsys service and serves it until SIGTERM or SIGINT.\n"
    "Says on stdout when it serves; logs to stderr; lines that a full pipe has no room for are dropped.\n"
    "Exit codes: 0 ended by a signal, 1 can't serve, 2 wrong usage, 3 ended by force 3 s after a signal, since a\n"
    "component did not return.";

constexpr const char* ENVIRONMENT =
    "Environment:\n"
    "  SUBSYS_DEVICE_ROOT  the device folder where --device is not given; without either,\n"
    "                      the paths of a device are those of this machine\n"
    "  SUBSYS_BINDER_DIR   the folder of the service names\n\n"
    "Example: subsysd --device build/device --load build/lib/libsimvs.so";

}  // namespace

Options Options::parse(int argc, char** argv) {
    Options options;
    CLI::App app(ABOUT, "subsysd");
    app.footer(ENVIRONMENT);
    app.add_option("--device", options.device, "The folder that stands for the device")->type_name("DIR");
    std::string level = "info";
    app.add_option("--log-level", level, "The lowest level that is logged: debug, info, warn or error")
        ->type_name("LEVEL")
        ->check(CLI::IsMember(LEVELS).description(""))
        ->capture_default_str();
    app.add_option("--load", options.libraries, "A component library to load; may be given several times")
        ->type_name("LIBRARY")
        ->expected(1)
        ->take_all();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error) == 0 ? EXIT_SUCCESS : EXIT_USAGE);
    }
    options.logLevel = LEVELS.at(level);
    return options;
}
