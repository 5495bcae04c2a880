#pragma once

#include <string_view>

// Linux only: on a device the system records what <cutils/trace.h> marks.
namespace device {

// Records the marks of this process from now on, until it ends, in the file `trace@<program>` of the runtime folder
// (device/RuntimeFolder.h). The file of the program's last run becomes `trace-last@<program>`. While another process of
// the program records, this one is `<program>@2`, and so on up to 16. A forked child records nothing.
//
// Where the file can't be made, nothing is recorded, one warning is logged and the result is false. A file on a disk,
// unlike one in memory (XDG_RUNTIME_DIR is), can make a mark wait while the kernel writes it back. To be called once,
// before the threads whose marks matter are named. Thread: any.
bool startRecorder(std::string_view program);

// The same for a program that records only when the environment variable SUBSYS_TRACE is "1".
bool startRecorderWhenAsked(std::string_view program);

}  // namespace device
