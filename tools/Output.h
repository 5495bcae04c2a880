#pragma once

#include "tools/Json.h"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace subsysctl {

// What Output::report() takes. Without a verb where none is concerned.
[[nodiscard]] Json errorJson(const char* kind, const std::string& verb, const std::string& message);

// How things are shown.
struct Style {
    bool json = false;
    bool colour = false;
    bool progress = false;    // a line about the progress, on stderr
    size_t width = SIZE_MAX;  // columns of a table
    size_t textWidth = 80;    // columns of running text
};

// What the terminals behind stdout and stderr can do; at least 40 columns. COLUMNS and NO_COLOR are obeyed.
[[nodiscard]] Style terminalStyle(bool json);

// What the user sees: one line for each thing, written out at once, as JSON or for a person.
class Output {
public:
    Output(std::ostream& out, std::ostream& err, const Style& style) : mOut(out), mErr(err), mStyle(style) {}
    ~Output() { clearProgress(); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // A response, an indication, a callback's call, or a status: the first key says which.
    void print(const Json& event);
    // Lines of "key: value": as they are, or as one object.
    void printState(const std::string& lines);
    // An error or a note, `{"error":"noAnswer","verb":...,"message":...,"hint":...}`: to stderr, with --json to the
    // output. The first key says which; "verb", "hint" and "line" may be missing.
    void report(const Json& problem);
    // What report() would write, and where: for a signal handler.
    struct Line {
        int descriptor;
        std::string text;
    };
    [[nodiscard]] Line lineFor(const Json& problem) const;
    // What is reported from now on concerns this line of the input; 0: none.
    void setInputLine(size_t line) { mInputLine = line; }
    // In place of the line before; the next output takes it away.
    void progress(const std::string& text);

    [[nodiscard]] const Style& style() const { return mStyle; }
    // For what is no event.
    [[nodiscard]] std::ostream& stream();
    // False once nobody reads.
    [[nodiscard]] bool isOpen() const { return mOut.good(); }

private:
    std::string textFor(const Json& event) const;
    std::string paint(std::string_view text, std::string_view code) const;
    std::string outcome(const Json& event) const;
    void clearProgress();

    std::ostream& mOut;
    std::ostream& mErr;
    const Style mStyle;
    size_t mInputLine = 0;
    bool mShowsProgress = false;
};

// `a=1 b={c=2} d=["x"]`, texts quoted.
[[nodiscard]] std::string describe(const Json& object);

}  // namespace subsysctl
