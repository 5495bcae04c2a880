#include "tools/Text.h"

#include <charconv>

namespace subsysctl {

namespace {

bool isUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

}  // namespace

std::string kebabCase(std::string_view camelCase) {
    std::string text;
    for (const char c : camelCase) {
        if (isUpper(c) && !text.empty()) text += '-';
        text += isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

std::string toHex(std::span<const uint8_t> bytes) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const uint8_t byte : bytes) {
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 15];
    }
    return text;
}

std::optional<std::vector<uint8_t>> parseHex(std::string_view text) {
    if (text.size() % 2 != 0) return std::nullopt;
    std::vector<uint8_t> bytes(text.size() / 2);
    for (size_t i = 0; i < bytes.size(); ++i) {
        const char* begin = text.data() + 2 * i;
        const auto [end, error] = std::from_chars(begin, begin + 2, bytes[i], 16);
        if (error != std::errc() || end != begin + 2) return std::nullopt;
    }
    return bytes;
}

std::optional<int64_t> parseNumber(std::string_view text, int64_t min, int64_t max) {
    const bool isNegative = text.starts_with('-');
    std::string digits(text.substr(isNegative ? 1 : 0));
    const bool isHex = digits.starts_with("0x");
    if (isHex) digits.erase(0, 2);
    if (digits.starts_with('-')) return std::nullopt;
    if (isNegative) digits.insert(0, 1, '-');
    int64_t number = 0;
    const char* end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, isHex ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != end || number < min || number > max) return std::nullopt;
    return number;
}

}  // namespace subsysctl
