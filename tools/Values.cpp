#include "tools/Values.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>

namespace subsysctl {

namespace {

constexpr FieldLimit LIMITS[] = {
    {"CallInfo", "text1", 31},
    {"CallInfo", "text2", 31},
    {"CallInfo", "text3", 255},
    {"CallInfo", "text4", 63},
    {"CallInfo", "text5", 255},
    {"CallInfo", "text6", 255},
    {"ImsRtpPubIpAddrInfo", "ipAddr", 63},
    {"ImsRtpRedunSignalMsg", "msg", 249},
    {"ImsRtpDataInfo", "data", 255, "the component receives a record of zeros"},
};

// More does not go into a call.
constexpr size_t MAX_FILE = 1 << 20;

std::string readFile(const std::string& name, std::vector<uint8_t>& value) {
    const auto problem = [&](const char* what) { return "can't read '" + name + "': " + what; };
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(name.c_str(), "re"), std::fclose);
    if (!file) return problem(std::strerror(errno));
    std::vector<uint8_t> bytes(MAX_FILE + 1);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (std::ferror(file.get())) return problem(std::strerror(errno));
    if (bytes.size() > MAX_FILE) return problem("more than 1 MiB");
    value = std::move(bytes);
    return "";
}

}  // namespace

const FieldLimit* limitOf(std::string_view record, std::string_view field) {
    const auto* limit = std::find_if(std::begin(LIMITS), std::end(LIMITS),
                                     [&](const auto& each) { return each.record == record && each.field == field; });
    return limit == std::end(LIMITS) ? nullptr : limit;
}

std::string store(const std::string& text, std::string& value) {
    value = text;
    return "";
}

std::string store(const std::string& text, std::vector<uint8_t>& value) {
    if (text.starts_with('@')) return readFile(text.substr(1), value);
    auto bytes = parseHex(text);
    if (!bytes) return "expected pairs of hexadecimal digits or @FILE, not '" + text + "'";
    value = *std::move(bytes);
    return "";
}

}  // namespace subsysctl
