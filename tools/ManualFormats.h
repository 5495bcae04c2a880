#pragma once

#include "tools/Manual.h"

#include <ostream>
#include <string_view>

namespace subsysctl {

// The manual page of section 1, for man(1).
void printManPage(const Manual& manual, std::ostream& out);

// Each a file that the shell loads to complete verbs, options and values.
void printBashCompletion(const Manual& manual, std::ostream& out);
void printZshCompletion(const Manual& manual, std::ostream& out);
void printFishCompletion(const Manual& manual, std::ostream& out);

struct ManualFormat {
    std::string_view name;
    void (*print)(const Manual& manual, std::ostream& out);
};

inline constexpr ManualFormat MANUAL_FORMATS[] = {
    {"man", printManPage},
    {"bash", printBashCompletion},
    {"zsh", printZshCompletion},
    {"fish", printFishCompletion},
};

}  // namespace subsysctl
