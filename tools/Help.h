#pragma once

#include "tools/Manual.h"

#include <cstddef>
#include <ostream>

namespace subsysctl {

// Each in lines of at most `width` columns, 40 or more.
void printHelp(const Manual& manual, size_t width, std::ostream& out);
void printHelp(const Manual& manual, const ManualVerb& verb, size_t width, std::ostream& out);

}  // namespace subsysctl
