#pragma once

// Text for logs and toString() of records. Thread: any.

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>

#include <concepts>
#include <memory>
#include <optional>
#include <ranges>
#include <sstream>
#include <string>
#include <type_traits>

namespace android::internal {

template <typename T>
std::string ToString(const T& value);

namespace details {

template <typename T>
concept HasToString = requires(const T value) {
    { value.toString() } -> std::convertible_to<std::string>;
};
// The function that stands beside an enumeration.
template <typename T>
concept HasFreeToString = std::is_enum_v<T> && requires(T value) {
    { toString(value) } -> std::convertible_to<std::string>;
};
template <typename T>
constexpr bool isPointer = false;
template <typename T>
constexpr bool isPointer<std::optional<T>> = true;
template <typename T>
constexpr bool isPointer<std::unique_ptr<T>> = true;
template <typename T>
constexpr bool isPointer<std::shared_ptr<T>> = !std::derived_from<T, ndk::ICInterface>;

template <typename T>
std::string listToString(const T& values) {
    std::string text = "[";
    for (const auto& each : values)
        text += (text.size() > 1 ? ", " : "") + ToString<std::ranges::range_value_t<T>>(each);
    return text + "]";
}

template <typename T>
std::string streamToString(const T& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

}  // namespace details

template <typename T>
std::string ToString(const T& value) {
    if constexpr (std::same_as<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::same_as<T, char16_t> || std::same_as<T, int8_t> || std::same_as<T, uint8_t>) {
        return std::to_string(static_cast<int>(value));
    } else if constexpr (details::HasFreeToString<T>) {
        return toString(value);
    } else if constexpr (std::is_enum_v<T>) {
        return ToString(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::convertible_to<T, std::string>) {
        return value;
    } else if constexpr (details::HasToString<T>) {
        return value.toString();
    } else if constexpr (details::isPointer<T>) {
        return value ? ToString(*value) : "(null)";
    } else if constexpr (std::ranges::range<T>) {
        return details::listToString(value);
    } else if constexpr (std::same_as<T, ndk::SpAIBinder>) {
        return value.get() == nullptr ? "(null)" : "binder:" + details::streamToString(value.get());
    } else if constexpr (requires { value->asBinder(); }) {
        return value == nullptr ? "(null)" : "interface:" + details::streamToString(value.get());
    } else {
        return details::streamToString(value);
    }
}

}  // namespace android::internal
