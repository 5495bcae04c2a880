#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace subsysctl {

// `sendIccCmd` becomes `send-icc-cmd`.
[[nodiscard]] std::string kebabCase(std::string_view camelCase);

// Two lower-case digits for each byte.
[[nodiscard]] std::string toHex(std::span<const uint8_t> bytes);

// Two digits of either case for each byte, nothing else; empty when the text is anything else.
[[nodiscard]] std::optional<std::vector<uint8_t>> parseHex(std::string_view text);

// Decimal, or hexadecimal after "0x", both with an optional minus; empty when the text is anything else or out of
// range.
[[nodiscard]] std::optional<int64_t> parseNumber(std::string_view text, int64_t min, int64_t max);

template <class T>
[[nodiscard]] std::optional<T> parseNumber(std::string_view text) {
    const auto number = parseNumber(text, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    return number ? std::optional(static_cast<T>(*number)) : std::nullopt;
}

}  // namespace subsysctl
