#include "tools/Output.h"

#include "tools/Dump.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>
#include <device/Escape.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace subsysctl {

namespace {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno;

constexpr std::string_view GREEN = "32";
constexpr std::string_view RED = "31";
constexpr std::string_view CYAN = "36";

std::string describeValue(const Json& value) {
    if (value.is_object()) return "{" + describe(value) + "}";
    if (!value.is_array()) return device::escaped(dump(value));
    std::string text;
    for (const Json& element : value) text += (text.empty() ? "" : ", ") + describeValue(element);
    return "[" + text + "]";
}

// What the line says elsewhere, or what says nothing: the kind, and the header of a response.
Json detailsOf(const Json& event) {
    Json details = event;
    details.erase(event.begin().key());
    if (event.contains("response")) details.erase("info");
    if (event.contains("indication")) details.erase("time");
    const bool oneRecord = details.size() == 1 && details.front().is_object();
    return oneRecord ? details.front() : details;
}

constexpr size_t MIN_WIDTH = 40;
constexpr size_t MAX_TEXT_WIDTH = 100;

// Of a terminal; 0 where there is none.
size_t columns(int descriptor) {
    if (!isatty(descriptor)) return 0;
    const char* const given = std::getenv("COLUMNS");
    const size_t wanted = given == nullptr ? 0 : std::strtoul(given, nullptr, 10);
    winsize size{};
    if (wanted == 0) ioctl(descriptor, TIOCGWINSZ, &size);
    return std::max(MIN_WIDTH, wanted != 0 ? wanted : size.ws_col != 0 ? size.ws_col : Style().textWidth);
}

std::string part(const Json& problem, const char* key) {
    return problem.value(key, std::string());
}

}  // namespace

Json errorJson(const char* kind, const std::string& verb, const std::string& message) {
    Json error = {{"error", kind}};
    if (!verb.empty()) error["verb"] = verb;
    error["message"] = message;
    return error;
}

Style terminalStyle(bool json) {
    const char* const noColour = std::getenv("NO_COLOR");
    Style style{json, isatty(STDOUT_FILENO) && !(noColour && *noColour), isatty(STDERR_FILENO) != 0};
    if (const size_t width = columns(STDOUT_FILENO)) {
        style.width = width;
        style.textWidth = std::min(width, MAX_TEXT_WIDTH);
    }
    return style;
}

std::string describe(const Json& object) {
    std::string text;
    for (const auto& [key, value] : object.items()) {
        text += (text.empty() ? "" : " ") + key + "=" + describeValue(value);
    }
    return text;
}

void Output::printState(const std::string& lines) {
    clearProgress();
    if (!mStyle.json) {
        mOut << lines << std::flush;
        return;
    }
    mOut << dump(Json(linesOf(lines))) << std::endl;
}

void Output::print(const Json& event) {
    clearProgress();
    mOut << (mStyle.json ? dump(event) : textFor(event)) << std::endl;
}

void Output::report(const Json& problem) {
    clearProgress();
    (mStyle.json ? mOut : mErr) << lineFor(problem).text << std::flush;
}

Output::Line Output::lineFor(const Json& problem) const {
    if (mStyle.json) {
        Json object = problem;
        if (mInputLine > 0) object["line"] = mInputLine;
        return {STDOUT_FILENO, dump(object) + "\n"};
    }
    const std::string place = mInputLine > 0 ? "line " + std::to_string(mInputLine) + ": " : "";
    const std::string verb = part(problem, "verb");
    const std::string hint = part(problem, "hint");
    const std::string line = "subsysctl: " + place + verb + (verb.empty() ? "" : ": ") + part(problem, "message") +
                             (hint.empty() ? "" : "; ") + hint;
    return {STDERR_FILENO, device::escaped(line) + "\n"};
}

void Output::progress(const std::string& text) {
    if (!mStyle.progress) return;
    mErr << "\r\033[K" << text.substr(0, mStyle.textWidth - 1) << std::flush;
    mShowsProgress = true;
}

void Output::clearProgress() {
    if (!mShowsProgress) return;
    mErr << "\r\033[K" << std::flush;
    mShowsProgress = false;
}

std::ostream& Output::stream() {
    clearProgress();
    return mOut;
}

std::string Output::textFor(const Json& event) const {
    const std::string kind = event.begin().key();
    const std::string name = event.front().get<std::string>();
    const std::string details = describe(detailsOf(event));
    const std::string mark = kind == "indication" ? paint(kind, CYAN) + " " : "";
    return mark + name + outcome(event) + (details.empty() ? "" : " ") + details;
}

std::string Output::outcome(const Json& event) const {
    if (event.contains("response")) {
        const Json& info = event.at("info");
        const auto error = static_cast<SUBSYS_Errno>(info.at("error").get<int32_t>());
        const auto colour = error == SUBSYS_Errno::SUCCESS ? GREEN : RED;
        return " #" + std::to_string(info.at("serial").get<int32_t>()) + " " + paint(toString(error), colour);
    }
    if (const Json info = event.value("info", Json()); event.contains("callback") && info.contains("result")) {
        const bool succeeded = info.at("result").get<bool>();
        return " " + paint(succeeded ? "SUCCESS" : "FAILED", succeeded ? GREEN : RED);
    }
    return "";
}

std::string Output::paint(std::string_view text, std::string_view code) const {
    if (!mStyle.colour) return std::string(text);
    return "\033[" + std::string(code) + "m" + std::string(text) + "\033[0m";
}

}  // namespace subsysctl
