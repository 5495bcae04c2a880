// What all fuzz targets do before the first input.

#include <android/log.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** arguments) {
    setenv("TMPDIR", "/dev/shm", 1);  // an input becomes a file a thousand times a second
    // The service library reads its plugin list while it is loaded: the device folder has to be known before that.
    const char* const device = getenv("SUBSYS_DEVICE_ROOT");
    if (device == nullptr || strcmp(device, FUZZ_DEVICE) != 0) {
        setenv("SUBSYS_DEVICE_ROOT", FUZZ_DEVICE, 1);
        execv("/proc/self/exe", *arguments);
    }
    // Lines are formatted, which reads their arguments, and dropped.
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
    return 0;
}
