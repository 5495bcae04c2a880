#pragma once

#include <string_view>

// Copies the text to [out, end) and returns the end of the copy. A control character (C0, DEL, C1), which a terminal
// would obey, and a byte that is no UTF-8 become \x and two digits. The copy ends before the first character that does
// not fit. Thread: any.
[[nodiscard]] char* escape(std::string_view text, char* out, const char* end);
