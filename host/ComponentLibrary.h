#pragma once

#include <string>

// Both load component libraries, which add their components to the component manager from their static initialisers and
// stay loaded. A library that adds none gets a warning. Thread: looper.

// False, with an error line, where the library can't be loaded.
[[nodiscard]] bool loadComponentLibrary(const std::string& name);

// Loads each file *.so of the folder, in the order of their names. One that can't be loaded leaves an error line, and
// the next one follows. A warning says that the folder is missing or has none.
void loadComponentFolder(const std::string& folder);
