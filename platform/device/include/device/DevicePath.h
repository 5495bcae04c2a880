#pragma once

#include <string>
#include <string_view>

namespace device {

// Where the file with this absolute path of a device is found on this machine. Thread: any.
//
// On a device that is the path itself. On Linux, where the environment variable SUBSYS_DEVICE_ROOT names a folder, it
// is that folder with the path below it: ".." never climbs out of it. What symbolic links inside the folder point to is
// the business of whoever filled the folder. The folder and the file need not exist.
[[nodiscard]] std::string path(std::string_view absolutePath);

}  // namespace device
