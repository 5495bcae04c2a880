#pragma once

#include <ostream>
#include <type_traits>
#include <vector>

namespace subsys_stubs {

// A value of the interface for a person: `7`, `true`, `SUCCESS`, `[1, 255]`, `Name{first: 1}`.
template <class T>
void print(std::ostream& out, const T& value) {
    if constexpr (requires { value.toString(); }) {
        out << value.toString();
    } else if constexpr (std::is_enum_v<T>) {
        out << toString(value);
    } else if constexpr (std::is_same_v<T, bool>) {
        out << (value ? "true" : "false");
    } else if constexpr (std::is_integral_v<T>) {
        out << +value;  // a byte is a number, not a character
    } else {
        out << value;
    }
}

template <class T>
void print(std::ostream& out, const std::vector<T>& values) {
    const char* separator = "";
    out << '[';
    for (const T& value : values) {
        print(out << separator, value);
        separator = ", ";
    }
    out << ']';
}

}  // namespace subsys_stubs
