#pragma once

namespace fuzz {

// What must hold for every input; ends the process where it does not.
inline void require(bool isTrue) {
    if (!isTrue) __builtin_trap();
}

}  // namespace fuzz
