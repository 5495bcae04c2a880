#pragma once

#include <string>

// Loads a component library, which registers its components from its static initialisers and stays loaded. False, with
// a line on stderr, when it can't be loaded. Main thread.
[[nodiscard]] bool loadComponentLibrary(const std::string& name);
