#pragma once

namespace mindroid {

// Log lines with a printf format, written to the Android log. Thread: any.
class Log {
public:
    [[gnu::format(printf, 2, 3)]] static void d(const char* tag, const char* format, ...);
    [[gnu::format(printf, 2, 3)]] static void i(const char* tag, const char* format, ...);
    [[gnu::format(printf, 2, 3)]] static void w(const char* tag, const char* format, ...);
    [[gnu::format(printf, 2, 3)]] static void e(const char* tag, const char* format, ...);
};

}  // namespace mindroid
