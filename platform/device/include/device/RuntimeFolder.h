#pragma once

#include <string>

namespace device {

// The folder that holds the names of services and the files of recorders: $SUBSYS_BINDER_DIR, else subsys-binder in
// $XDG_RUNTIME_DIR, else one for the user under /tmp. Any thread.
[[nodiscard]] std::string runtimeFolder();

// A descriptor of it, which the caller owns; the folder is created when missing. -1 with errno when it can't be opened;
// EPERM when it is not this user's alone. Any thread.
[[nodiscard]] int openRuntimeFolder();

}  // namespace device
