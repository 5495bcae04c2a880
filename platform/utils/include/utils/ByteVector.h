#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace subsys_utils {

// A copy of `size` bytes; empty when `data` is null. Thread: any.
[[nodiscard]] inline std::vector<uint8_t> toVec(const uint8_t* data, size_t size) {
    return data == nullptr ? std::vector<uint8_t>() : std::vector<uint8_t>(data, data + size);
}

}  // namespace subsys_utils
