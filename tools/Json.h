#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "stubs/Fields.h"
#include "stubs/Interface.h"
#include "tools/Text.h"

namespace subsysctl {

using Json = nlohmann::ordered_json;

template <class T>
Json toJson(const std::vector<T>& values);

// Any value of the interface: records as objects, enumerations as numbers, byte vectors in hex.
template <class T>
Json toJson(const T& value) {
    if constexpr (subsys_stubs::Record<T>) {
        Json object = Json::object();
        subsys_stubs::forEachField(value, [&](const char* name, const auto& field) { object[name] = toJson(field); });
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

// A call that a callback received: `{"<kind>":"<method>","<argument>":...}`.
template <class I, uint32_t Code, class... Args>
Json callToJson(const char* kind, const Args&... arguments) {
    constexpr auto kMethod = std::get<Code - FIRST_CALL_TRANSACTION>(I::methods());
    static_assert(kMethod.code == Code && kMethod.arguments.size() == sizeof...(Args));
    Json call = {{kind, kMethod.name}};
    size_t index = 0;
    ((call[kMethod.arguments[index++]] = toJson(arguments)), ...);
    return call;
}

// One line. Bytes that are not UTF-8 are shown as U+FFFD.
[[nodiscard]] inline std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace subsysctl
