#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <mindroid/Boxes.h>

namespace subsys_utils {

// A copy of `size` bytes; empty when `data` is null. Any thread.
[[nodiscard]] inline std::vector<uint8_t> toVec(const uint8_t* data, size_t size) {
    return data == nullptr ? std::vector<uint8_t>() : std::vector<uint8_t>(data, data + size);
}

// A copy of the array's bytes; empty when there is no array. Any thread.
[[nodiscard]] inline std::vector<uint8_t> toVec(const mindroid::sp<mindroid::ByteArray>& bytes) {
    return bytes ? bytes->value() : std::vector<uint8_t>();
}

}  // namespace subsys_utils
