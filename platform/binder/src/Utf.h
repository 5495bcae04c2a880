#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace binder {

// Nothing when the last sequence is cut; any other byte that is no UTF-8 becomes U+FFFD.
[[nodiscard]] std::optional<size_t> utf16Length(std::string_view utf8);
// Writes utf16Length(utf8) units, each little-endian, to `out`, which need not be aligned.
void utf8ToUtf16(std::string_view utf8, uint8_t* out);

// Bytes of UTF-8 for `units` little-endian units at `utf16`; a lone surrogate becomes U+FFFD.
[[nodiscard]] size_t utf8Length(const uint8_t* utf16, size_t units);
void utf16ToUtf8(const uint8_t* utf16, size_t units, char* out);

}  // namespace binder
