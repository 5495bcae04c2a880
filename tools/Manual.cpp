#include "tools/Manual.h"

#include "tools/Text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

namespace subsysctl {

namespace {

constexpr char SUMMARY[] = "send requests to the subsys service and show what comes back";

constexpr const char* PARAGRAPHS[] = {
    "Several verbs may follow each other. They run in turn over one connection, each until its answer is there. A '-' "
    "in the place of a verb reads verbs from the input, one a line.",
    "An integer that is not given is 0, a text or a byte vector empty. Integers are decimal or 0x hexadecimal, byte "
    "vectors pairs of hexadecimal digits, or @FILE for the bytes of a file. Without --data-len that is the number of "
    "bytes of --data.",
    "The service has one RF client. A verb that needs its place is refused while another process holds it, unless "
    "--take-over is given. A watch whose place was taken comes back when the other process has gone; any other client "
    "has to register again itself. send-icc-meta-cmd and the verbs that look inside take no place.",
    "There are two IMS ORTC clients; a third is refused. Both get every IMS answer: give them different serials "
    "(--serial) when both send the same request.",
    "With --json every outcome is an object on the output, a line each. The first key says which: response, callback, "
    "indication (with its time), status, client, watch, trace, request, finding, wrote, note, or error, with its verb, "
    "serial, message, hint and line of the input.",
};

constexpr ManualNote EXIT_CODES[] = {
    {"0", "Answered with error 0, or done."},
    {"1", "Answered with another error, or the call failed; doctor found a fault; the output could not be written."},
    {"2", "Wrong usage."},
    {"69", "No such service, or it died; no recording."},
    {"71", "Out of memory or threads."},
    {"75", "Another process is the RF client (see --take-over), or two others are the IMS clients."},
    {"124", "No answer in time."},
    {"", "Of several verbs the first that fails decides; the others still run, unless the service is gone."},
};

constexpr ManualNote ENVIRONMENT[] = {
    {"SUBSYS_BINDER_DIR", "The folder of the names of services and of the recordings."},
    {"SUBSYS_TRACE", "With 1 this call is recorded, too, for the verb trace."},
    {"NO_COLOR", "Not empty: no colours."},
    {"COLUMNS", "The width of the terminal; help and tables wrap to it, at 40 at least."},
};

// "TEXT:{plugin,component}" is a type with its choices.
void setType(const std::string& type, ManualOption& option) {
    option.type = type.substr(0, type.find(':'));
    const size_t open = type.find('{');
    if (open == std::string::npos) return;
    option.choices = CLI::detail::split(type.substr(open + 1, type.find('}') - open - 1), ',');
}

ManualOption optionOf(const CLI::Option& option) {
    ManualOption entry{option.get_name(), "", option.get_description(), {}, option.get_required()};
    setType(option.get_type_name(), entry);
    if (option.get_positional() || option.get_items_expected_max() == 0) entry.type.clear();
    return entry;
}

std::vector<ManualOption> optionsOf(const CLI::App& app) {
    std::vector<ManualOption> options;
    for (const CLI::Option* option : app.get_options()) {
        const bool isHelp = option == app.get_help_ptr() && app.get_parent() != nullptr;
        if (!isHelp) options.push_back(optionOf(*option));
    }
    return options;
}

ManualVerb verbOf(const CLI::App& app) {
    const std::string description = app.get_description();
    const size_t end = std::min(description.find('\n'), description.size());
    const size_t example = std::min(description.find_first_not_of("\n ", end), description.size());
    return {app.get_name(), app.get_group(), description.substr(0, end), description.substr(example), optionsOf(app)};
}

}  // namespace

std::string ManualOption::meaning() const {
    std::string meaning = text;
    for (const std::string& choice : choices) meaning += (&choice == &choices.front() ? " One of " : ", ") + choice;
    return meaning + (choices.empty() ? "" : ".") + (required ? " Required." : "");
}

const ManualVerb* Manual::find(const std::string& verb) const {
    const auto found = std::find_if(verbs.begin(), verbs.end(), [&](const auto& each) { return each.name == verb; });
    return found == verbs.end() ? nullptr : &*found;
}

Manual manualOf(const CLI::App& app) {
    Manual manual{SUMMARY, {std::begin(PARAGRAPHS), std::end(PARAGRAPHS)}, optionsOf(app), {}, EXIT_CODES, ENVIRONMENT};
    const auto verbs = app.get_subcommands([](const CLI::App*) { return true; });
    std::vector<std::string> groups;
    for (const CLI::App* verb : verbs) {
        if (std::find(groups.begin(), groups.end(), verb->get_group()) == groups.end()) {
            groups.push_back(verb->get_group());
        }
    }
    for (const std::string& group : groups) {
        for (const CLI::App* verb : verbs) {
            if (verb->get_group() == group) manual.verbs.push_back(verbOf(*verb));
        }
    }
    return manual;
}

std::string usageOf(const ManualVerb& verb) {
    std::string usage = verb.name;
    for (const ManualOption& option : verb.options) {
        usage += option.required ? " " + option.usage() : " [" + option.usage() + "]";
    }
    return usage;
}

}  // namespace subsysctl
