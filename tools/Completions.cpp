#include "tools/ManualFormats.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace subsysctl {

namespace {

std::string join(const std::vector<std::string>& words, std::string_view between) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : std::string(between)) + word;
    return text;
}

// As one word of all three shells: texts have no backslash.
std::string quote(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::vector<std::string> verbNames(const Manual& manual) {
    std::vector<std::string> names;
    for (const ManualVerb& verb : manual.verbs) names.push_back(verb.name);
    return names;
}

std::vector<std::string> optionNames(const std::vector<ManualOption>& options) {
    std::vector<std::string> names;
    for (const ManualOption& option : options) {
        if (!option.isPositional()) names.push_back(option.name);
    }
    return names;
}

// How a shell offers files, and words that stand between two texts.
struct Syntax {
    const char* files;
    const char* beforeWords;
    const char* afterWords;
};

constexpr Syntax BASH = {"compopt -o filenames; COMPREPLY=($(compgen -f -- \"$word\"))", "COMPREPLY=($(compgen -W '",
                         "' -- \"$word\"))"};
constexpr Syntax ZSH = {"_files", "compadd -- ", ""};

// Empty where nothing is known of the value.
std::string commandFor(const ManualOption& option, const Syntax& syntax) {
    if (option.isFile()) return syntax.files;
    return option.choices.empty() ? "" : syntax.beforeWords + join(option.choices, " ") + syntax.afterWords;
}

// The branches of a `case` over "VERB WORD", WORD being the word before: what its value can be. An argument without a
// name follows its verb.
void printValueBranches(const Manual& manual, const Syntax& syntax, std::ostream& out) {
    std::set<std::string> unknown;
    const auto print = [&](const std::string& verb, const ManualOption& option) {
        const std::string command = commandFor(option, syntax);
        const std::string& before = option.isPositional() ? verb : option.name;
        if (!command.empty()) out << "        '" << verb << " " << before << "') " << command << "; return ;;\n";
        if (command.empty() && !option.type.empty()) unknown.insert("*' " + option.name + "'");
    };
    for (const ManualVerb& verb : manual.verbs) {
        for (const ManualOption& option : verb.options) print(verb.name, option);
    }
    for (const ManualOption& option : manual.options) print("", option);
    out << "        " << join({unknown.begin(), unknown.end()}, " | ") << ") return ;;\n";
}

void printOptionBranches(const Manual& manual, std::ostream& out) {
    for (const ManualVerb& verb : manual.verbs) {
        const std::string names = join(optionNames(verb.options), " ");
        if (!names.empty()) out << "        " << verb.name << ") options+=(" << names << ") ;;\n";
    }
}

}  // namespace

void printBashCompletion(const Manual& manual, std::ostream& out) {
    const std::string verbs = join(verbNames(manual), " ");
    out << "_subsysctl() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} verb= each\n"
           "    local options=("
        << join(optionNames(manual.options), " ")
        << ")\n"
           "    local verbs=("
        << verbs
        << ")\n"
           "    COMPREPLY=()\n"
           "    for each in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        [[ \" ${verbs[*]} \" != *\" $each \"* ]] || verb=$each\n"
           "    done\n"
           "    case \"$verb $before\" in\n"
           "        'help help') COMPREPLY=($(compgen -W \"${verbs[*]}\" -- \"$word\")); return ;;\n";
    printValueBranches(manual, BASH, out);
    out << "    esac\n"
           "    case $verb in\n";
    printOptionBranches(manual, out);
    out << "    esac\n"
           "    [[ $word != -* ]] || verbs=()\n"
           "    COMPREPLY=($(compgen -W \"${verbs[*]} ${options[*]}\" -- \"$word\"))\n"
           "}\n"
           "complete -F _subsysctl subsysctl\n";
}

void printZshCompletion(const Manual& manual, std::ostream& out) {
    out << "#compdef subsysctl\n"
           "_subsysctl() {\n"
           "    local verb each\n"
           "    local -a options=("
        << join(optionNames(manual.options), " ") << ")\n    local -a verbs=(\n";
    for (const ManualVerb& verb : manual.verbs) out << "        " << quote(verb.name + ":" + verb.text) << "\n";
    out << "    )\n"
           "    for each in ${words[2,CURRENT-1]}; do\n"
           "        [[ -z ${verbs[(r)$each:*]} ]] || verb=$each\n"
           "    done\n"
           "    case \"$verb ${words[CURRENT-1]}\" in\n"
           "        'help help') _describe verb verbs; return ;;\n";
    printValueBranches(manual, ZSH, out);
    out << "    esac\n"
           "    case $verb in\n";
    printOptionBranches(manual, out);
    out << "    esac\n"
           "    if [[ ${words[CURRENT]} == -* ]]; then\n"
           "        compadd -- $options\n"
           "    else\n"
           "        _describe verb verbs\n"
           "    fi\n"
           "}\n"
           "_subsysctl \"$@\"\n";
}

void printFishCompletion(const Manual& manual, std::ostream& out) {
    const auto option = [&](const std::string& condition, const ManualOption& each) {
        if (each.isPositional()) return;
        out << "complete -c subsysctl" << condition << " -l " << optionNames({each}).front().substr(2) << " -d "
            << quote(each.text);
        if (!each.type.empty()) out << (each.isFile() ? " -r -F" : " -x");
        if (!each.choices.empty()) out << " -a " << quote(join(each.choices, " "));
        out << "\n";
    };
    out << "complete -c subsysctl -f\n";
    for (const ManualOption& each : manual.options) option("", each);
    for (const ManualVerb& verb : manual.verbs) {
        const std::string condition = " -n '__fish_seen_subcommand_from " + verb.name + "'";
        out << "complete -c subsysctl -a " << verb.name << " -d " << quote(verb.text) << "\n";
        for (const ManualOption& each : verb.options) {
            option(condition, each);
            if (each.isPositional() && !each.choices.empty()) {
                out << "complete -c subsysctl" << condition << " -a " << quote(join(each.choices, " ")) << "\n";
            }
        }
    }
}

}  // namespace subsysctl
