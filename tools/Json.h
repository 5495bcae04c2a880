#pragma once

#include "tools/Text.h"

#include <stubs/Table.h>

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
#include <vector>

namespace subsysctl {

using Json = nlohmann::ordered_json;

template <class T>
Json toJson(const std::vector<T>& values);

// Any value of the interface: records as objects, byte vectors in hex, enumerations as numbers. In a record the name of
// an enumeration's value stands beside it: `"error":1,"errorName":"NOT_SUPPORTED"`.
template <class T>
Json toJson(const T& value) {
    if constexpr (subsys_stubs::Record<T>) {
        Json object = Json::object();
        subsys_stubs::forEachField(value, [&]<class Member>(const auto& field, const Member& member) {
            object[field.name] = toJson(member);
            if constexpr (std::is_enum_v<Member>) object[std::string(field.name) + "Name"] = toString(member);
        });
        return object;
    } else if constexpr (std::is_enum_v<T>) {
        return static_cast<std::underlying_type_t<T>>(value);
    } else {
        return value;
    }
}

template <class T>
Json toJson(const std::vector<T>& values) {
    if constexpr (std::is_same_v<T, uint8_t>) {
        return toHex(values);
    } else {
        Json array = Json::array();
        for (const T& value : values) array.push_back(toJson(value));
        return array;
    }
}

// A call of a method of the table: `{"<kind>":"<method>","<argument>":...}`.
template <class Method, class... Args>
Json callToJson(const char* kind, const Method& method, const Args&... arguments) {
    Json call = {{kind, method.name}};
    size_t index = 0;
    ((call[method.arguments[index++]] = toJson(arguments)), ...);
    return call;
}

// One line. Bytes that are not UTF-8 are shown as U+FFFD.
[[nodiscard]] inline std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace subsysctl
