#pragma once

#include <android/binder_ibinder.h>

#include <map>
#include <string>
#include <vector>

namespace subsysctl {

// The lines of a dump, "key: value", by key.
using DumpLines = std::map<std::string, std::string>;

// What the object writes to a dump with these arguments. Waits for its process. Thread: any.
[[nodiscard]] binder_status_t dumpOf(AIBinder* binder, const std::vector<const char*>& arguments, std::string& text);

[[nodiscard]] DumpLines linesOf(const std::string& dump);

}  // namespace subsysctl
