#pragma once

#include "compliance/Checks.h"
#include "compliance/ElfFile.h"

#include <string>

namespace compliance {

// What a plugin and a component library have in common. Each returns false when the checks behind it make no sense.

// The file, without running it.
[[nodiscard]] bool checkFile(Checks& checks, const char* page, ElfFile& elf);
// What it takes from others, without running it; what they run when they are loaded runs.
[[nodiscard]] bool checkNeeds(Checks& checks, const char* page, const ElfFile& elf);
// Opens it, as dlopen does with the flags.
[[nodiscard]] bool checkOpens(Checks& checks, const char* page, const std::string& file, int flags, void*& handle);

}  // namespace compliance
