#pragma once

#include <string>
#include <string_view>

// For text from outside, before it goes to a log, a dump or a terminal. A control character (C0, DEL, C1), which a
// terminal would obey, and a byte that is no UTF-8 become \x and two digits. Thread: any.
namespace device {

// Copies the text to [out, end) and returns the end of the copy, which ends before the first character that does not
// fit. Allocates nothing.
[[nodiscard]] char* escape(std::string_view text, char* out, const char* end);

[[nodiscard]] std::string escaped(std::string_view text);

}  // namespace device
