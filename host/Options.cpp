#include "host/Options.h"

#include "host/LogLevel.h"

#include <getopt.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int EXIT_USAGE = 2;

constexpr const char* ABOUT =
    "Usage: subsysd [OPTION...]\n"
    "Publishes the ISubsys service and serves it until SIGTERM or SIGINT.\n"
    "Prints a line when it serves. Logs to stderr; SIGUSR1 logs its state.\n"
    "\n"
    "Options:\n";

constexpr const char* FOOTER =
    "\n"
    "Environment:\n"
    "  SUBSYS_DEVICE_ROOT  the device folder where --device is not given; without\n"
    "                      either, device paths are paths of this machine\n"
    "  SUBSYS_BINDER_DIR   the folder of the service names\n"
    "\n"
    "Exit codes: 0 ended by a signal, 1 can't serve, 2 wrong usage,\n"
    "            3 ended by force because a component did not return,\n"
    "            4 out of memory or threads where nothing else was left to do\n"
    "\n"
    "Example: subsysd --device build/device --load build/lib/libsimvs.so\n";

bool takeLevel(Options& options, std::string_view text) {
    const auto level = parseLogLevel(text);
    options.logLevel = level.value_or(options.logLevel);
    return level.has_value();
}

bool takeStopTimeout(Options& options, std::string_view text) {
    constexpr int LONGEST = 600'000;
    int millis = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), millis);
    options.stopTimeout = std::chrono::milliseconds(millis);
    return error == std::errc() && end == text.data() + text.size() && millis >= 0 && millis <= LONGEST;
}

bool takeDevice(Options& options, std::string_view text) {
    options.device = text;
    return true;
}

bool takeLibrary(Options& options, std::string_view text) {
    options.libraries.emplace_back(text);
    return true;
}

bool takeFolder(Options& options, std::string_view text) {
    options.folders.emplace_back(text);
    return true;
}

[[noreturn]] void endAfterOutput() {
    std::exit(fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE);
}

bool showHelp(Options& options, std::string_view text);

bool showVersion(Options&, std::string_view) {
    puts("subsysd " SUBSYS_VERSION);
    endAfterOutput();
}

struct Row {
    const char* name;
    // What the option takes; null: nothing.
    const char* argument;
    const char* help;
    // False: not what `expected` says.
    bool (*take)(Options& options, std::string_view text);
    const char* expected = "";
};

constexpr Row ROWS[] = {
    {"device", "DIR", "the folder that stands for the device", takeDevice, "a folder"},
    {"load", "LIBRARY", "load a component library; may be repeated", takeLibrary, "a file"},
    {"load-dir", "DIR", "load all *.so of the folder by name; may be repeated", takeFolder, "a folder"},
    {"log-level", "LEVEL", "log from debug, info, warn or error up; default info", takeLevel, LOG_LEVELS},
    {"stop-timeout", "MS", "milliseconds to end after a signal; default 3000", takeStopTimeout, "0 to 600000"},
    {"help", nullptr, "print this", showHelp},
    {"version", nullptr, "print the version", showVersion},
};

bool showHelp(Options&, std::string_view) {
    fputs(ABOUT, stdout);
    for (const Row& row : ROWS) {
        const std::string head = std::string(row.name) + " " + (row.argument != nullptr ? row.argument : "");
        printf("  --%-18s %s\n", head.c_str(), row.help);
    }
    fputs(FOOTER, stdout);
    endAfterOutput();
}

[[noreturn]] void fail(const std::string& what) {
    fprintf(stderr, "subsysd: %s\nsubsysd --help lists the options\n", what.c_str());
    std::exit(EXIT_USAGE);
}

// What getopt_long answers for a row is its index behind FIRST, which is no character.
constexpr int FIRST = 256;

std::vector<option> longOptions() {
    std::vector<option> result;
    for (const Row& row : ROWS) {
        const int hasArgument = row.argument != nullptr ? required_argument : no_argument;
        result.push_back({row.name, hasArgument, nullptr, FIRST + static_cast<int>(result.size())});
    }
    result.push_back({});
    return result;
}

void take(Options& options, const Row& row) {
    const char* text = optarg != nullptr ? optarg : "";
    if (row.take(options, text)) return;
    fail(std::string("--") + row.name + " '" + text + "': expected " + row.expected);
}

// Reports what getopt_long did not take: `optopt` is the option's value, or 0 for one that it doesn't know.
[[noreturn]] void failAt(int answer, const char* argument) {
    if (optopt < FIRST) {
        const std::string shortOption = {'-', static_cast<char>(optopt)};
        fail("unknown option '" + (optopt != 0 ? shortOption : std::string(argument)) + "'");
    }
    const Row& row = ROWS[optopt - FIRST];
    const std::string name = std::string("--") + row.name;
    fail(answer == ':' ? name + ": expected " + row.expected : name + " takes no value");
}

}  // namespace

Options Options::parse(int argc, char** argv) {
    Options options;
    const std::vector<option> known = longOptions();
    for (;;) {
        const int answer = getopt_long(argc, argv, ":", known.data(), nullptr);
        if (answer == -1) break;
        if (answer < FIRST) failAt(answer, argv[optind - 1]);
        take(options, ROWS[answer - FIRST]);
    }
    if (optind < argc) fail(std::string("unexpected argument '") + argv[optind] + "'; expected options only");
    return options;
}
