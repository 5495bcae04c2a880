#pragma once

#include <mindroid/Object.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mindroid {

// Values that travel as objects. Immutable, so any thread may read them.

// One scalar. The Tag makes each box a class of its own.
template <typename T, typename Tag>
class ScalarBox : public Object {
public:
    explicit ScalarBox(T value) : mValue(value) {}
    [[nodiscard]] T value() const { return mValue; }

private:
    const T mValue;
};

using Boolean = ScalarBox<bool, struct BooleanTag>;
using Byte = ScalarBox<uint8_t, struct ByteTag>;
using Short = ScalarBox<uint16_t, struct ShortTag>;
using Integer = ScalarBox<int32_t, struct IntegerTag>;
using Long = ScalarBox<int64_t, struct LongTag>;

// One virtual table for all libraries.
extern template class ScalarBox<bool, BooleanTag>;
extern template class ScalarBox<uint8_t, ByteTag>;
extern template class ScalarBox<uint16_t, ShortTag>;
extern template class ScalarBox<int32_t, IntegerTag>;
extern template class ScalarBox<int64_t, LongTag>;

class String : public Object {
public:
    // Copies the text; a null pointer reads as "".
    explicit String(const char* text);
    explicit String(std::string text);

    [[nodiscard]] const std::string& value() const { return mValue; }
    [[nodiscard]] size_t size() const { return mValue.size(); }

private:
    const std::string mValue;
};

class ByteArray : public Object {
public:
    // Copies `size` bytes; null data reads as an empty array.
    ByteArray(const uint8_t* data, size_t size);
    explicit ByteArray(std::vector<uint8_t> data);

    [[nodiscard]] const uint8_t* data() const { return mValue.data(); }
    [[nodiscard]] size_t size() const { return mValue.size(); }
    [[nodiscard]] const std::vector<uint8_t>& value() const { return mValue; }
    // Lower-case hexadecimal, two digits a byte, nothing between.
    [[nodiscard]] std::string toString() const;

private:
    const std::vector<uint8_t> mValue;
};

class IntegerArray : public Object {
public:
    // Copies `count` values; null data reads as an empty array.
    IntegerArray(const int32_t* data, size_t count);

    [[nodiscard]] const int32_t* data() const { return mValue.data(); }
    [[nodiscard]] size_t size() const { return mValue.size(); }

private:
    const std::vector<int32_t> mValue;
};

}  // namespace mindroid
