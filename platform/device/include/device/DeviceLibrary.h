#pragma once

#include <string>

namespace device {

// Opens the library with this absolute path of a device, as dlopen does with RTLD_NOW | RTLD_GLOBAL. Returns its
// handle, or null. Thread: any.
//
// On Linux the file is the one at device::path(), and an error line says why it can't be opened: once for each file and
// reason, since callers try again.
[[nodiscard]] void* openLibrary(const std::string& absolutePath);

// The same for a file of this machine, with the flags of dlopen. Logs nothing: `reason` says why the result is null.
//
// On Linux it refuses two kinds of files that the loader can't bear: it waits for ever on a FIFO, and the process dies
// with SIGBUS when it maps a library that was cut short.
[[nodiscard]] void* openLibraryFile(const std::string& file, int flags, std::string& reason);

}  // namespace device
