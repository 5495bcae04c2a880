#pragma once

#include <string>

namespace device {

// The folder that holds the names of services and the files of recorders: $SUBSYS_BINDER_DIR, else subsys-binder in
// $XDG_RUNTIME_DIR, else one for the user under /tmp. Thread: any.
[[nodiscard]] std::string runtimeFolder();

// A descriptor of it (O_PATH), which the caller owns. -1 with errno when it can't be opened; EPERM when it is not this
// user's alone. `trouble` then says why: "is open to other users". Thread: any.
[[nodiscard]] int openRuntimeFolder(std::string& trouble);
// The same; the folder is created when missing.
[[nodiscard]] int makeRuntimeFolder(std::string& trouble);

}  // namespace device
