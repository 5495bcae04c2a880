#include "tools/Help.h"

#include "tools/Text.h"

#include <string>
#include <string_view>
#include <utility>

namespace subsysctl {

namespace {

constexpr size_t MIN_TWO_COLUMNS = 64;
constexpr size_t COLUMN = 32;

class Printer {
public:
    Printer(size_t width, std::ostream& out) : mWidth(width), mOut(out) {}

    // The first line begins with `left`, the others with `indent` blanks.
    void text(std::string_view words, size_t indent = 0, std::string left = "") {
        for (const std::string& line : wrap(words, mWidth - indent)) {
            left.resize(indent, ' ');
            mOut << std::exchange(left, "") << line << '\n';
        }
    }
    void title(std::string_view title) {
        mOut << '\n';
        text(title);
    }
    // A name and what it means, beside each other where there is room.
    void entry(const std::string& name, std::string_view meaning) {
        const bool fits = mWidth >= MIN_TWO_COLUMNS && name.size() + 3 < COLUMN;
        if (!fits) text(name, 2);
        if (!meaning.empty()) text(meaning, indent(), fits ? "  " + name : "");
    }
    [[nodiscard]] size_t indent() const { return mWidth >= MIN_TWO_COLUMNS ? COLUMN : 6; }

private:
    const size_t mWidth;
    std::ostream& mOut;
};

void printOptions(const std::string& title, const std::vector<ManualOption>& options, Printer& printer) {
    if (options.empty()) return;
    printer.title(title);
    for (const ManualOption& option : options) printer.entry(option.usage(), option.meaning());
}

void printNotes(const std::string& title, std::span<const ManualNote> notes, Printer& printer) {
    printer.title(title);
    for (const ManualNote& note : notes) printer.entry(note.name, note.text);
}

}  // namespace

void printHelp(const Manual& manual, size_t width, std::ostream& out) {
    Printer printer(width, out);
    printer.text("subsysctl: " + manual.summary + ".");
    printer.title("Usage");
    printer.text("subsysctl [OPTIONS] VERB [OPTIONS] [VERB...]", 2);
    printer.text("'subsysctl help VERB' shows the options of a verb.");
    printOptions("Options", manual.options, printer);
    const std::string* group = nullptr;
    for (const ManualVerb& verb : manual.verbs) {
        if (group == nullptr || *group != verb.group) printer.title(verb.group);
        group = &verb.group;
        printer.entry(verb.name, verb.text);
        printer.text(verb.example, printer.indent() + 2, std::string(printer.indent() + 2, ' '));
    }
    for (const std::string& paragraph : manual.paragraphs) {
        out << '\n';
        printer.text(paragraph);
    }
    printNotes("Exit codes", manual.exitCodes, printer);
    printNotes("Environment", manual.environment, printer);
}

void printHelp(const Manual& manual, const ManualVerb& verb, size_t width, std::ostream& out) {
    Printer printer(width, out);
    printer.text(verb.text);
    printer.title("Usage");
    printer.text("subsysctl " + usageOf(verb), 2);
    printOptions("Options", verb.options, printer);
    printOptions("Options of every verb", manual.options, printer);
    printer.title("Example");
    printer.text("subsysctl " + verb.example, 2);
}

}  // namespace subsysctl
