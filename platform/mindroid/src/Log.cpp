#include <mindroid/Log.h>

#include <android/log.h>

#include <cstdarg>

namespace mindroid {

namespace {

// Formats nothing for a line that would not be written.
void write(int priority, const char* tag, const char* format, va_list arguments) {
    if (__android_log_is_loggable(priority, tag, ANDROID_LOG_VERBOSE) == 0) return;
    __android_log_vprint(priority, tag, format, arguments);
}

}  // namespace

void Log::d(const char* tag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write(ANDROID_LOG_DEBUG, tag, format, arguments);
    va_end(arguments);
}

void Log::i(const char* tag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write(ANDROID_LOG_INFO, tag, format, arguments);
    va_end(arguments);
}

void Log::w(const char* tag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write(ANDROID_LOG_WARN, tag, format, arguments);
    va_end(arguments);
}

void Log::e(const char* tag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write(ANDROID_LOG_ERROR, tag, format, arguments);
    va_end(arguments);
}

}  // namespace mindroid
