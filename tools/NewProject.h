#pragma once

#include "tools/ExitCode.h"
#include "tools/Output.h"

#include <string>

namespace subsysctl {

// Why a project can't have this name, or an empty text: it names a folder, a source file and a target of the build.
[[nodiscard]] std::string refuseProjectName(const std::string& name);

// Writes the project of an author of a "plugin", a "component" or a "client" into the folder `name`, which must not
// exist: the installed example under that name. Prints what was written, or reports why nothing was.
[[nodiscard]] ExitCode newProject(const std::string& kind, const std::string& name, Output& output);

}  // namespace subsysctl
