#include "tools/Output.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>

#include <sstream>

namespace subsysctl {

namespace {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno;

constexpr std::string_view GREEN = "32";
constexpr std::string_view RED = "31";
constexpr std::string_view CYAN = "36";

std::string describeValue(const Json& value) {
    if (value.is_object()) return "{" + describe(value) + "}";
    if (!value.is_array()) return dump(value);
    std::string text;
    for (const Json& element : value) text += (text.empty() ? "" : ", ") + describeValue(element);
    return "[" + text + "]";
}

// What the line says elsewhere, or what says nothing: the kind, and the header of a response.
Json detailsOf(const Json& event) {
    Json details = event;
    details.erase(event.begin().key());
    if (event.contains("response")) details.erase("info");
    const bool oneRecord = details.size() == 1 && details.front().is_object();
    return oneRecord ? details.front() : details;
}

}  // namespace

std::string describe(const Json& object) {
    std::string text;
    for (const auto& [key, value] : object.items()) {
        text += (text.empty() ? "" : " ") + key + "=" + describeValue(value);
    }
    return text;
}

void Output::printState(const std::string& lines) {
    if (!mJson) {
        mOut << lines << std::flush;
        return;
    }
    Json state = Json::object();
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        const size_t colon = line.find(": ");
        if (colon != std::string::npos) state[line.substr(0, colon)] = line.substr(colon + 2);
    }
    mOut << dump(state) << std::endl;
}

void Output::print(const Json& event) {
    mOut << (mJson ? dump(event) : lineFor(event)) << std::endl;
}

std::string Output::lineFor(const Json& event) const {
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
    if (!mColour) return std::string(text);
    return "\033[" + std::string(code) + "m" + std::string(text) + "\033[0m";
}

}  // namespace subsysctl
