#include "tools/Text.h"

#include <time.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <numeric>
#include <sstream>
#include <utility>

namespace subsysctl {

namespace {

bool isUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

// How many letters must be put in, left out or replaced to make one word the other.
size_t distance(std::string_view from, std::string_view to) {
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (size_t i = 0; i < from.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t j = 0; j < to.size(); ++j) {
            const size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
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

std::vector<std::string> wrap(std::string_view text, size_t width) {
    std::vector<std::string> lines(1);
    std::istringstream words{std::string(text)};
    for (std::string word; words >> word;) {
        if (!lines.back().empty() && lines.back().size() + 1 + word.size() > width) lines.emplace_back();
        lines.back() += (lines.back().empty() ? "" : " ") + word;
        while (lines.back().size() > width) {
            std::string rest = lines.back().substr(width);
            lines.back().resize(width);
            lines.push_back(std::move(rest));
        }
    }
    return lines;
}

std::string nearest(std::string_view word, std::span<const std::string> candidates) {
    const std::string* best = nullptr;
    size_t least = (word.size() + 1) / 3;  // more is no misspelling
    for (const std::string& candidate : candidates) {
        const size_t found = distance(word, candidate);
        if (found > least || (best != nullptr && found == least)) continue;
        least = found;
        best = &candidate;
    }
    return best == nullptr ? "" : *best;
}

std::string durationText(int64_t nanos) {
    struct Unit {
        double nanos;
        double upTo;  // of this unit
        const char* format;
    };
    static constexpr Unit UNITS[] = {{1e3, 1e3, "%.0f us"},   {1e6, 1e3, "%.1f ms"},  {1e9, 100, "%.1f s"},
                                     {6e10, 100, "%.0f min"}, {3.6e12, 72, "%.0f h"}, {8.64e13, 1e9, "%.0f days"}};
    const auto fits = [nanos](const Unit& unit) { return static_cast<double>(nanos) < unit.upTo * unit.nanos; };
    const auto unit = std::find_if(std::begin(UNITS), std::end(UNITS) - 1, fits);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), unit->format, static_cast<double>(nanos) / unit->nanos);
    return text.data();
}

std::string timestamp(std::chrono::system_clock::time_point time) {
    const auto millis = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
    const time_t seconds = millis / 1000;
    tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 40> text{};
    const size_t length = strftime(text.data(), text.size(), "%FT%T", &parts);
    std::snprintf(text.data() + length, text.size() - length, ".%03dZ", static_cast<int>(millis % 1000));
    return text.data();
}

}  // namespace subsysctl
