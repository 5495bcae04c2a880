#include "Utf.h"

#include <cstring>

namespace binder {
namespace {

constexpr uint32_t REPLACEMENT = 0xfffd;
constexpr uint32_t CUT = 0xffffffff;

// Bytes of the sequence that `lead` begins; 0 when it begins none.
size_t sequenceLength(uint8_t lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xc2 && lead < 0xe0) return 2;
    if (lead >= 0xe0 && lead < 0xf0) return 3;
    return lead >= 0xf0 && lead < 0xf5 ? 4 : 0;
}

// Overlong forms, surrogates and numbers past the last code point.
bool isForbidden(uint32_t point, size_t length) {
    constexpr uint32_t LEAST[] = {0, 0, 0x80, 0x800, 0x10000};
    return point < LEAST[length] || (point >= 0xd800 && point < 0xe000) || point > 0x10ffff;
}

// Takes one code point off the front; an invalid byte is taken alone.
uint32_t takeUtf8(std::string_view& text) {
    const auto lead = static_cast<uint8_t>(text.front());
    const size_t length = sequenceLength(lead);
    uint32_t point = length == 1 ? lead : lead & (0x7fU >> length);
    for (size_t i = 1; i < length; ++i) {
        if (i == text.size()) return CUT;
        const auto next = static_cast<uint8_t>(text[i]);
        if ((next & 0xc0) != 0x80) {
            text.remove_prefix(1);
            return REPLACEMENT;
        }
        point = (point << 6) | (next & 0x3f);
    }
    const bool valid = length != 0 && !isForbidden(point, length);
    text.remove_prefix(valid ? length : 1);
    return valid ? point : REPLACEMENT;
}

uint32_t unitAt(const uint8_t* utf16, size_t index) {
    uint16_t unit;
    memcpy(&unit, utf16 + index * sizeof(unit), sizeof(unit));
    return unit;
}

uint8_t* putUnit(uint8_t* out, uint32_t value) {
    const auto unit = static_cast<uint16_t>(value);
    memcpy(out, &unit, sizeof(unit));
    return out + sizeof(unit);
}

bool isHigh(uint32_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool isLow(uint32_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

// Takes one code point at `index`.
uint32_t takeUtf16(const uint8_t* utf16, size_t units, size_t& index) {
    const uint32_t unit = unitAt(utf16, index++);
    if (!isHigh(unit)) return isLow(unit) ? REPLACEMENT : unit;
    if (index == units || !isLow(unitAt(utf16, index))) return REPLACEMENT;
    return 0x10000 + ((unit - 0xd800) << 10) + (unitAt(utf16, index++) - 0xdc00);
}

size_t utf8Width(uint32_t point) {
    return point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
}

char* putUtf8(char* out, uint32_t point) {
    const size_t width = utf8Width(point);
    if (width == 1) {
        *out = static_cast<char>(point);
        return out + 1;
    }
    for (size_t i = width - 1; i > 0; --i, point >>= 6) out[i] = static_cast<char>(0x80 | (point & 0x3f));
    out[0] = static_cast<char>((0xf00U >> width) | point);
    return out + width;
}

}  // namespace

std::optional<size_t> utf16Length(std::string_view utf8) {
    size_t units = 0;
    while (!utf8.empty()) {
        const uint32_t point = takeUtf8(utf8);
        if (point == CUT) return std::nullopt;
        units += point < 0x10000 ? 1 : 2;
    }
    return units;
}

void utf8ToUtf16(std::string_view utf8, uint8_t* out) {
    while (!utf8.empty()) {
        const uint32_t point = takeUtf8(utf8);
        if (point < 0x10000) {
            out = putUnit(out, point);
        } else {
            out = putUnit(out, 0xd7c0 + (point >> 10));
            out = putUnit(out, 0xdc00 + (point & 0x3ff));
        }
    }
}

size_t utf8Length(const uint8_t* utf16, size_t units) {
    size_t bytes = 0;
    for (size_t i = 0; i < units;) bytes += utf8Width(takeUtf16(utf16, units, i));
    return bytes;
}

void utf16ToUtf8(const uint8_t* utf16, size_t units, char* out) {
    for (size_t i = 0; i < units;) out = putUtf8(out, takeUtf16(utf16, units, i));
}

}  // namespace binder
