#include <device/Escape.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace device {

namespace {

// The length of the UTF-8 character at the text's beginning, which is not empty; 0 for what has to be escaped.
size_t printableLength(std::string_view text) {
    const auto lead = static_cast<uint8_t>(text[0]);
    if (lead < 0x80) return lead >= 0x20 && lead != 0x7f ? 1 : 0;
    if (lead < 0xc2 || lead > 0xf4) return 0;
    const size_t length = lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    if (text.size() < length) return 0;
    uint32_t code = lead & (0x7fU >> length);
    for (const char byte : text.substr(1, length - 1)) {
        const auto next = static_cast<uint8_t>(byte);
        if ((next & 0xc0U) != 0x80) return 0;
        code = code << 6U | (next & 0x3fU);
    }
    // The first character of each length; for two bytes, the first behind C1.
    constexpr uint32_t LOWEST[] = {0, 0, 0xa0, 0x800, 0x10000};
    return code >= LOWEST[length] && code <= 0x10ffff ? length : 0;
}

}  // namespace

char* escape(std::string_view text, char* out, const char* end) {
    constexpr const char* DIGITS = "0123456789abcdef";
    while (!text.empty()) {
        const auto byte = static_cast<uint8_t>(text[0]);
        const char hex[] = {'\\', 'x', DIGITS[byte >> 4U], DIGITS[byte & 0xfU]};
        const size_t length = printableLength(text);
        const std::string_view unit = length > 0 ? text.substr(0, length) : std::string_view(hex, sizeof(hex));
        if (unit.size() > static_cast<size_t>(end - out)) break;
        out = std::copy(unit.begin(), unit.end(), out);
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    return out;
}

std::string escaped(std::string_view text) {
    constexpr size_t LONGEST = 4;  // of a byte
    std::string copy(LONGEST * text.size(), '\0');
    copy.resize(static_cast<size_t>(escape(text, copy.data(), copy.data() + copy.size()) - copy.data()));
    return copy;
}

}  // namespace device
