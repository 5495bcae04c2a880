#pragma once

#include <mindroid/Boxes.h>

#include <cstddef>
#include <cstdint>

namespace hal {

// The box in which each type of reply value travels. A type that is not listed does not compile: a plain int, for one,
// has to say how wide it is.

inline mindroid::sp<mindroid::Object> box(const mindroid::sp<mindroid::Object>& value) {
    return value;
}
inline mindroid::sp<mindroid::Object> box(uint8_t value) {
    return new mindroid::Byte(value);
}
inline mindroid::sp<mindroid::Object> box(uint16_t value) {
    return new mindroid::Short(value);
}
inline mindroid::sp<mindroid::Object> box(uint32_t value) {
    return new mindroid::Integer(static_cast<int32_t>(value));
}
inline mindroid::sp<mindroid::Object> box(uint64_t value) {
    return new mindroid::Long(static_cast<int64_t>(value));
}
// Text ends at its NUL and is copied, as are the arrays.
inline mindroid::sp<mindroid::Object> box(const char* text) {
    return new mindroid::String(text);
}
inline mindroid::sp<mindroid::Object> box(const unsigned char* data, uint32_t length) {
    return new mindroid::ByteArray(data, length);
}
inline mindroid::sp<mindroid::Object> box(const int* data, uint32_t count) {
    return new mindroid::IntegerArray(data, count);
}
mindroid::sp<mindroid::Object> box(std::nullptr_t) = delete;

}  // namespace hal
