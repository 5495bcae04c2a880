#pragma once

#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace subsys_stubs {

// One field of a record: its name in the interface and where it is.
template <class Owner, class Type>
struct Field {
    const char* name;
    Type Owner::*member;
};
template <class Owner, class Type>
Field(const char*, Type Owner::*) -> Field<Owner, Type>;

// A record of the interface: fields() lists its fields in the order of the interface.
template <class T>
concept Record = requires {
    T::fields();
};

// Calls visitor(name, value) for each field, in the order of the interface.
template <class R, class Visitor>
requires Record<std::remove_const_t<R>>
constexpr void forEachField(R& record, Visitor&& visitor) {
    std::apply([&](const auto&... field) { (visitor(field.name, record.*field.member), ...); },
               std::remove_const_t<R>::fields());
}

template <class T>
void print(std::ostream& out, const T& value) {
    if constexpr (Record<T>) {
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
    const char* separator = "[";
    for (const T& value : values) {
        print(out << separator, value);
        separator = ", ";
    }
    out << (values.empty() ? "[]" : "]");
}

// `Name{first: 1, second: [2, 3]}`
template <Record R>
std::string describe(const char* name, const R& record) {
    std::ostringstream out;
    const char* separator = "{";
    out << name;
    forEachField(record, [&](const char* field, const auto& value) {
        print(out << separator << field << ": ", value);
        separator = ", ";
    });
    out << '}';
    return out.str();
}

}  // namespace subsys_stubs
