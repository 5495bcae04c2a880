#pragma once

#include <chrono>
#include <cstddef>
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

// Lines of at most `width` columns, broken at blanks; a word that is longer is cut. At least one line.
[[nodiscard]] std::vector<std::string> wrap(std::string_view text, size_t width);

// The candidate that is spelled most like the word, or an empty text when none is.
[[nodiscard]] std::string nearest(std::string_view word, std::span<const std::string> candidates);

// "312 us", "31.2 ms", "4.1 s", "12 min", "26 h", "5 days".
[[nodiscard]] std::string durationText(int64_t nanos);

// ISO 8601, UTC, with milliseconds: "2026-01-31T09:05:00.123Z".
[[nodiscard]] std::string timestamp(std::chrono::system_clock::time_point time);

}  // namespace subsysctl
