#include <mindroid/Boxes.h>

#include <functional>

namespace mindroid {

namespace {

// Equal when the other object is a box of the same class with an equal value.
template <typename Box>
bool sameValue(const Box& box, const sp<Object>& other) {
    const auto* peer = dynamic_cast<const Box*>(other.get());
    return peer != nullptr && peer->value() == box.value();
}

template <typename Range>
int32_t hashOf(const Range& range) {
    uint32_t hash = 0;
    for (const auto element : range) hash = 31 * hash + static_cast<uint32_t>(element);
    return static_cast<int32_t>(hash);
}

template <typename T>
std::vector<T> copyOf(const T* data, size_t count) {
    return data == nullptr ? std::vector<T>() : std::vector<T>(data, data + count);
}

}  // namespace

template <typename T, typename Tag>
bool ScalarBox<T, Tag>::equals(const sp<Object>& other) const {
    return sameValue(*this, other);
}

template <typename T, typename Tag>
int32_t ScalarBox<T, Tag>::hashCode() const {
    return static_cast<int32_t>(std::hash<T>()(mValue));
}

template class ScalarBox<bool, BooleanTag>;
template class ScalarBox<uint8_t, ByteTag>;
template class ScalarBox<uint16_t, ShortTag>;
template class ScalarBox<int32_t, IntegerTag>;
template class ScalarBox<int64_t, LongTag>;

String::String(const char* text) : mValue(text == nullptr ? "" : text) {}

String::String(std::string text) : mValue(std::move(text)) {}

bool String::equals(const sp<Object>& other) const {
    return sameValue(*this, other);
}

int32_t String::hashCode() const {
    return hashOf(mValue);
}

ByteArray::ByteArray(const uint8_t* data, size_t size) : mValue(copyOf(data, size)) {}

ByteArray::ByteArray(std::vector<uint8_t> data) : mValue(std::move(data)) {}

std::string ByteArray::toString() const {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * mValue.size());
    for (const uint8_t byte : mValue) {
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 0xf]);
    }
    return text;
}

bool ByteArray::equals(const sp<Object>& other) const {
    return sameValue(*this, other);
}

int32_t ByteArray::hashCode() const {
    return hashOf(mValue);
}

IntegerArray::IntegerArray(const int32_t* data, size_t count) : mValue(copyOf(data, count)) {}

bool IntegerArray::equals(const sp<Object>& other) const {
    return sameValue(*this, other);
}

int32_t IntegerArray::hashCode() const {
    return hashOf(mValue);
}

}  // namespace mindroid
