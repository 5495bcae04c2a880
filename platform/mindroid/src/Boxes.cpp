#include <mindroid/Boxes.h>

#include <utility>

namespace mindroid {

namespace {

template <typename T>
std::vector<T> copyOf(const T* data, size_t count) {
    return data == nullptr ? std::vector<T>() : std::vector<T>(data, data + count);
}

}  // namespace

template class ScalarBox<bool, BooleanTag>;
template class ScalarBox<uint8_t, ByteTag>;
template class ScalarBox<uint16_t, ShortTag>;
template class ScalarBox<int32_t, IntegerTag>;
template class ScalarBox<int64_t, LongTag>;

String::String(const char* text) : mValue(text == nullptr ? "" : text) {}

String::String(std::string text) : mValue(std::move(text)) {}

ByteArray::ByteArray(const uint8_t* data, size_t size) : mValue(copyOf(data, size)) {}

ByteArray::ByteArray(std::vector<uint8_t> data) : mValue(std::move(data)) {}

std::string ByteArray::toString() const {
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string text(2 * mValue.size(), '\0');
    char* place = text.data();
    for (const uint8_t byte : mValue) {
        *place++ = DIGITS[byte >> 4];
        *place++ = DIGITS[byte & 0xf];
    }
    return text;
}

IntegerArray::IntegerArray(const int32_t* data, size_t count) : mValue(copyOf(data, count)) {}

}  // namespace mindroid
