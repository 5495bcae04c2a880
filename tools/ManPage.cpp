#include "tools/ManualFormats.h"

#include <cctype>
#include <string>
#include <string_view>

namespace subsysctl {

namespace {

// Text that the formatter takes as it is.
std::string plain(std::string_view text) {
    std::string escaped;
    if (text.starts_with('.') || text.starts_with('\'')) escaped = "\\&";
    for (const char c : text) {
        if (c == '-' || c == '\\') escaped += '\\';
        escaped += c == '\\' ? 'e' : c;
    }
    return escaped;
}

std::string bold(std::string_view text) {
    return "\\fB" + plain(text) + "\\fR";
}

void title(std::string_view text, std::ostream& out) {
    out << ".SH \"";
    for (const char c : text) out << static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    out << "\"\n";
}

std::string usage(const ManualOption& option) {
    return bold(option.name) + (option.type.empty() ? "" : " \\fI" + option.type + "\\fR");
}

void printOption(const ManualOption& option, std::ostream& out) {
    out << ".TP\n" << usage(option) << "\n" << plain(option.meaning()) << "\n";
}

void printVerb(const ManualVerb& verb, std::ostream& out) {
    out << ".SS " << verb.name << "\n" << plain(verb.text) << "\n";
    for (const ManualOption& option : verb.options) printOption(option, out);
    out << ".PP\nExample:\n.PP\n.RS\n.nf\n" << plain("subsysctl " + verb.example) << "\n.fi\n.RE\n";
}

void printNotes(std::string_view name, std::span<const ManualNote> notes, std::ostream& out) {
    title(name, out);
    for (const ManualNote& note : notes) {
        if (*note.name == '\0') {
            out << ".PP\n" << plain(note.text) << "\n";
        } else {
            out << ".TP\n" << bold(note.name) << "\n" << plain(note.text) << "\n";
        }
    }
}

}  // namespace

void printManPage(const Manual& manual, std::ostream& out) {
    out << ".TH SUBSYSCTL 1 \"\" \"subsys " SUBSYS_VERSION "\" \"subsys manual\"\n";
    title("Name", out);
    out << "subsysctl \\- " << plain(manual.summary) << "\n";
    title("Synopsis", out);
    out << bold("subsysctl") << " [\\fIOPTIONS\\fR] \\fIVERB\\fR [\\fIOPTIONS\\fR] [\\fIVERB\\fR...]\n";
    title("Description", out);
    for (const std::string& paragraph : manual.paragraphs) out << ".PP\n" << plain(paragraph) << "\n";
    title("Options", out);
    for (const ManualOption& option : manual.options) printOption(option, out);
    std::string group;
    for (const ManualVerb& verb : manual.verbs) {
        if (verb.group != group) title(verb.group, out);
        group = verb.group;
        printVerb(verb, out);
    }
    printNotes("Exit status", manual.exitCodes, out);
    printNotes("Environment", manual.environment, out);
    title("See also", out);
    out << bold("subsysd") << " \\-\\-help\n";
}

}  // namespace subsysctl
