#pragma once

#include <string>

namespace hal {

// The binder refuses a string that ends inside a UTF-8 sequence, and with it the whole call; any other byte that is no
// UTF-8 travels as U+FFFD. This takes off an ending that a binder may see as such; true when there was one. Well-formed
// text stays whole. Any.
bool dropCutSequence(std::string& text);

}  // namespace hal
