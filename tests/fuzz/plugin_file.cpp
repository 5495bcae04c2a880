// Any file as a library: those that the loader cannot bear are refused. What the loader does with the others is its
// own.

#include "tests/fuzz/support/Require.h"
#include "tests/support/DeviceFolder.h"

#include <device/DeviceLibrary.h>

#include <dlfcn.h>

#include <string>
#include <string_view>

// In the place of the loader's.
extern "C" void* dlopen(const char*, int) {
    return nullptr;
}
extern "C" char* dlerror() {
    static char text[] = "not opened";
    return text;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::DeviceFolder DEVICE;
    static const std::string FILE = DEVICE.place("/library.so");
    DEVICE.write("/library.so", std::string_view(reinterpret_cast<const char*>(data), size));
    std::string reason;
    fuzz::require(device::openLibraryFile(FILE, RTLD_NOW, reason) == nullptr);
    fuzz::require(reason == "not opened" || reason == "file is truncated");
    return 0;
}
