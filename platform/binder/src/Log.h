#pragma once

#include <android/log.h>

namespace binder {

// One line about a peer or a misuse, under the tag of this library.
template <typename... Args>
void warn(const char* format, Args... args) {
    __android_log_print(ANDROID_LOG_WARN, "Binder", format, args...);
}
inline void warn(const char* text) {
    __android_log_write(ANDROID_LOG_WARN, "Binder", text);
}

}  // namespace binder
