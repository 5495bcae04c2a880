#pragma once

#include <android/binder_ibinder.h>

#include <string>
#include <vector>

namespace subsysctl {

// What the object writes to a dump with these arguments. Waits for its process. Any.
[[nodiscard]] binder_status_t dumpOf(AIBinder* binder, const std::vector<const char*>& arguments, std::string& text);

}  // namespace subsysctl
