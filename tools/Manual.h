#pragma once

#include <span>
#include <string>
#include <vector>

namespace CLI {
class App;
}

// What subsysctl can do, as data: help, manual page and completions are written from it.
namespace subsysctl {

struct ManualOption {
    std::string name;  // "--for"; of an argument without a name what it is: "KIND"
    std::string type;  // of the value: "SECONDS"; empty for a flag and for an argument without a name
    std::string text;
    std::vector<std::string> choices;  // empty: any value
    bool required = false;

    [[nodiscard]] bool isPositional() const { return name.front() != '-'; }
    [[nodiscard]] bool isFile() const { return type == "FILE"; }
    [[nodiscard]] std::string usage() const { return name + (type.empty() ? "" : " " + type); }
    // The text, and what it does not say.
    [[nodiscard]] std::string meaning() const;
};

struct ManualVerb {
    std::string name;
    std::string group;
    std::string text;
    std::string example;
    std::vector<ManualOption> options;
};

struct ManualNote {
    const char* name;
    const char* text;
};

struct Manual {
    std::string summary;
    std::vector<std::string> paragraphs;
    std::vector<ManualOption> options;  // of every verb
    std::vector<ManualVerb> verbs;      // those of a group together
    std::span<const ManualNote> exitCodes;
    std::span<const ManualNote> environment;

    // Null when there is none.
    [[nodiscard]] const ManualVerb* find(const std::string& verb) const;
};

// As the parser knows it. The description of a verb is its text and, on a line of its own, an example.
[[nodiscard]] Manual manualOf(const CLI::App& app);

// "trace [--for SECONDS] [--last] [--output FILE]"
[[nodiscard]] std::string usageOf(const ManualVerb& verb);

}  // namespace subsysctl
