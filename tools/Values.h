#pragma once

#include "tools/Text.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// How the values of a request are written on the command line: integers, texts and byte vectors.
namespace subsysctl {

// The longest value of a field that reaches the component, and what becomes of a longer one.
struct FieldLimit {
    std::string_view record;
    std::string_view field;
    size_t bytes;
    const char* beyond = "it arrives empty";
};

// Null for a field that has none.
[[nodiscard]] const FieldLimit* limitOf(std::string_view record, std::string_view field);

// N, TEXT or HEX.
template <class T>
constexpr const char* typeName() {
    if constexpr (std::is_same_v<T, std::vector<uint8_t>>) {
        return "HEX";
    } else if constexpr (std::is_same_v<T, std::string>) {
        return "TEXT";
    } else {
        static_assert(std::is_integral_v<T>, "say here how such a value is written");
        return "N";
    }
}

// "0 to 255"
template <class T>
std::string rangeOf() {
    using Limits = std::numeric_limits<T>;
    return std::to_string(Limits::min()) + " to " + std::to_string(Limits::max());
}

// The interface's own comment, and the range.
template <class T>
std::string helpOn(std::string help, const FieldLimit* limit) {
    if (help.empty() && limit != nullptr) {
        help = "At most " + std::to_string(limit->bytes) + " bytes; with more, " + limit->beyond + ".";
    }
    if (!help.empty()) help += " ";
    if constexpr (std::is_same_v<T, std::vector<uint8_t>>) return help + "Bytes in hexadecimal, or @FILE.";
    if constexpr (std::is_integral_v<T>) return help + rangeOf<T>() + ".";
    return help + "UTF-8.";
}

// Each stores the value of a text, or returns what is wrong with it.
[[nodiscard]] std::string store(const std::string& text, std::string& value);
// Pairs of hexadecimal digits, or "@" and the name of a file with the bytes, at most 1 MiB.
[[nodiscard]] std::string store(const std::string& text, std::vector<uint8_t>& value);
template <class T>
[[nodiscard]] std::string store(const std::string& text, T& value) {
    const auto number = parseNumber<T>(text);
    if (!number) return "expected an integer, " + rangeOf<T>() + ", not '" + text + "'";
    value = *number;
    return "";
}

}  // namespace subsysctl
